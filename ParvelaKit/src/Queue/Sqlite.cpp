#include "Queue/Sqlite.h"

namespace parvela {

Result<bool, SqliteError> SqliteStatement::step() {
    const int code = sqlite3_step(statement_.get());
    if (code == SQLITE_ROW) return true;
    if (code == SQLITE_DONE) return false;
    return Failure(SqliteError{code});
}

std::string SqliteStatement::text(int column) const {
    return optionalText(column).value_or(std::string());
}

std::optional<std::string> SqliteStatement::optionalText(int column) const {
    const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement_.get(), column));
    if (!bytes) return std::nullopt;
    return std::string(bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column)));
}

void SqliteStatement::bindAt(int index, const std::string& value) {
    sqlite3_bind_text64(statement_.get(), index, value.data(), value.size(), SQLITE_STATIC, SQLITE_UTF8);
}

void SqliteStatement::bindAt(int index, const std::optional<std::string>& value) {
    if (value) bindAt(index, *value);
}

Result<Sqlite, SqliteError> Sqlite::open(const std::filesystem::path& file, std::chrono::milliseconds patience) {
    sqlite3* handle = nullptr;
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
    const int code = sqlite3_open_v2(file.c_str(), &handle, flags, nullptr);
    Sqlite connection(handle);
    if (code != SQLITE_OK) return Failure(SqliteError{code});
    sqlite3_busy_timeout(handle, static_cast<int>(patience.count()));
    // Databases come from disk, where anybody may have written them.
    sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    return connection;
}

Result<SqliteStatement, SqliteError> Sqlite::prepare(std::string_view sql) {
    sqlite3_stmt* statement = nullptr;
    const int code = sqlite3_prepare_v2(handle_.get(), sql.data(), static_cast<int>(sql.size()), &statement, nullptr);
    if (code != SQLITE_OK) return Failure(SqliteError{code});
    return SqliteStatement(statement);
}

Result<std::int64_t, SqliteError> Sqlite::number(std::string_view sql) {
    auto statement = prepare(sql);
    if (!statement) return Failure(statement.error());
    const auto row = statement->step();
    if (!row) return Failure(row.error());
    return *row ? statement->integer(0) : 0;
}

}  // namespace parvela
