#include "Store/Database.h"

#include <utility>

#include <sqlite3.h>

namespace parvela::service {

namespace {

/// Another program, such as a backup, may hold the lock for a moment. Longer waits would stall every client.
constexpr int busyMilliseconds = 2000;

[[noreturn]] void fail(sqlite3* handle, int code) {
    throw DatabaseError(code, handle ? sqlite3_errmsg(handle) : sqlite3_errstr(code));
}

void check(sqlite3_stmt* statement, int code) {
    if (code != SQLITE_OK) fail(sqlite3_db_handle(statement), code);
}

}  // namespace

bool DatabaseError::isBusy() const noexcept {
    const int primary = code_ & 0xff;
    return primary == SQLITE_BUSY || primary == SQLITE_LOCKED;
}

Statement::Statement(Statement&& other) noexcept
    : statement_(std::exchange(other.statement_, nullptr)), inUse_(std::exchange(other.inUse_, nullptr)) {
}

Statement::~Statement() {
    if (!statement_) return;
    if (inUse_) {
        sqlite3_reset(statement_);
        sqlite3_clear_bindings(statement_);
        *inUse_ = false;
    } else {
        sqlite3_finalize(statement_);
    }
}

void Statement::bind(int index, std::nullptr_t) {
    check(statement_, sqlite3_bind_null(statement_, index));
}

void Statement::bind(int index, std::int64_t value) {
    check(statement_, sqlite3_bind_int64(statement_, index, value));
}

void Statement::bind(int index, std::string_view value) {
    check(statement_, sqlite3_bind_text64(statement_, index, value.data() ? value.data() : "", value.size(),
                                          SQLITE_TRANSIENT, SQLITE_UTF8));
}

void Statement::bind(int index, Blob value) {
    check(statement_, sqlite3_bind_blob64(statement_, index, value.bytes.data() ? value.bytes.data() : "",
                                          value.bytes.size(), SQLITE_TRANSIENT));
}

bool Statement::step() {
    const int code = sqlite3_step(statement_);
    if (code == SQLITE_ROW) return true;
    if (code != SQLITE_DONE) fail(sqlite3_db_handle(statement_), code);
    return false;
}

bool Statement::isNull(int column) const {
    return sqlite3_column_type(statement_, column) == SQLITE_NULL;
}

std::int64_t Statement::integer(int column) const {
    return sqlite3_column_int64(statement_, column);
}

std::string Statement::text(int column) const {
    const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
    if (!bytes) return {};
    return {bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
}

std::string Statement::blob(int column) const {
    const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement_, column));
    if (!bytes) return {};
    return {bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
}

std::optional<std::string> Statement::optionalText(int column) const {
    if (isNull(column)) return {};
    return text(column);
}

std::optional<std::int64_t> Statement::optionalInteger(int column) const {
    if (isNull(column)) return {};
    return integer(column);
}

std::optional<Instant> Statement::optionalInstant(int column) const {
    if (isNull(column)) return {};
    return instant(column);
}

Database::Database(const std::filesystem::path& file, int schemaVersion) {
    const int code = sqlite3_open_v2(file.c_str(), &handle_,
                                     SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    if (code != SQLITE_OK) {
        const std::string reason = handle_ ? sqlite3_errmsg(handle_) : sqlite3_errstr(code);
        sqlite3_close_v2(std::exchange(handle_, nullptr));
        throw DatabaseError(code, reason);
    }
    try {
        sqlite3_extended_result_codes(handle_, 1);
        sqlite3_busy_timeout(handle_, busyMilliseconds);
        sqlite3_db_config(handle_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
        sqlite3_db_config(handle_, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 1, nullptr);
        runScript(
            "PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL; PRAGMA foreign_keys = ON;"
            "PRAGMA temp_store = MEMORY; PRAGMA cache_size = -16000;");
        migrate(*this, schemaVersion);
    } catch (...) {
        close();
        throw;
    }
}

Database::~Database() {
    close();
}

void Database::close() noexcept {
    for (auto& [sql, cached] : cache_) sqlite3_finalize(cached->statement);
    sqlite3_close_v2(handle_);
}

void Database::runScript(const std::string& sql) {
    const int code = sqlite3_exec(handle_, sql.c_str(), nullptr, nullptr, nullptr);
    if (code != SQLITE_OK) fail(handle_, code);
}

std::int64_t Database::lastInsertedRow() const {
    return sqlite3_last_insert_rowid(handle_);
}

std::int64_t Database::changedRows() const {
    return sqlite3_changes64(handle_);
}

Statement Database::prepare(std::string_view sql) {
    auto found = cache_.find(sql);
    if (found == cache_.end()) found = cache_.emplace(std::string(sql), std::make_unique<Cached>()).first;
    Cached& cached = *found->second;
    if (cached.statement && !cached.inUse) {
        cached.inUse = true;
        return Statement(cached.statement, &cached.inUse);
    }
    sqlite3_stmt* statement = nullptr;
    const int code = sqlite3_prepare_v3(handle_, sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT,
                                        &statement, nullptr);
    if (code != SQLITE_OK) fail(handle_, code);
    if (cached.inUse) return Statement(statement, nullptr);
    cached.statement = statement;
    cached.inUse = true;
    return Statement(statement, &cached.inUse);
}

Transaction::Transaction(Database& database) : database_(database) {
    if (database_.transactionDepth_ == 0) {
        database_.run("BEGIN IMMEDIATE");
        database_.rollbackOnly_ = false;
    }
    ++database_.transactionDepth_;
}

Transaction::~Transaction() {
    if (!open_) return;
    --database_.transactionDepth_;
    database_.rollbackOnly_ = true;
    // SQLite may have rolled back by itself after a grave failure; a second ROLLBACK then only reports that.
    if (database_.transactionDepth_ == 0) sqlite3_exec(database_.handle_, "ROLLBACK", nullptr, nullptr, nullptr);
}

void Transaction::commit() {
    if (database_.rollbackOnly_) throw std::logic_error("An inner transaction was rolled back.");
    if (database_.transactionDepth_ == 1) database_.run("COMMIT");
    --database_.transactionDepth_;
    open_ = false;
}

}  // namespace parvela::service
