#pragma once

#include <ParvelaKit/Result.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <sqlite3.h>

namespace parvela {

/// A result code of SQLite other than success.
struct SqliteError {
    int code = SQLITE_ERROR;

    /// The file is no database, or a broken one.
    bool isDamage() const noexcept {
        const int primary = code & 0xff;
        return primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB;
    }
    std::string text() const { return sqlite3_errstr(code); }
};

using SqliteStatus = Result<void, SqliteError>;

/// One prepared statement. Bind every parameter, then step.
class SqliteStatement {
public:
    explicit SqliteStatement(sqlite3_stmt* statement) : statement_(statement) {}

    template <class... Values>
    SqliteStatement& bind(const Values&... values) {
        int index = 0;
        (bindAt(++index, values), ...);
        return *this;
    }

    /// True while there is a row. Bound texts must live until the last step.
    Result<bool, SqliteError> step();

    std::int64_t integer(int column) const { return sqlite3_column_int64(statement_.get(), column); }
    std::string text(int column) const;
    std::optional<std::string> optionalText(int column) const;

private:
    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
    };

    void bindAt(int index, std::int64_t value) { sqlite3_bind_int64(statement_.get(), index, value); }
    void bindAt(int index, const std::string& value);
    void bindAt(int index, const std::optional<std::string>& value);

    std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
};

/// One connection to a database file.
class Sqlite {
public:
    static Result<Sqlite, SqliteError> open(const std::filesystem::path& file, std::chrono::milliseconds patience);

    Result<SqliteStatement, SqliteError> prepare(std::string_view sql);

    /// Runs a statement that gives no rows.
    template <class... Values>
    SqliteStatus run(std::string_view sql, const Values&... values) {
        auto statement = prepare(sql);
        if (!statement) return Failure(statement.error());
        const auto row = statement->bind(values...).step();
        if (!row) return Failure(row.error());
        return {};
    }

    /// The integer in the first column of the first row; 0 without a row.
    Result<std::int64_t, SqliteError> number(std::string_view sql);

    std::int64_t lastRow() const { return sqlite3_last_insert_rowid(handle_.get()); }
    std::int64_t changedRows() const { return sqlite3_changes64(handle_.get()); }

    /// Runs `body` as one transaction, which is kept only when the body and the commit succeed.
    template <class Body>
    auto transaction(Body body) -> decltype(body()) {
        if (const auto begun = run("BEGIN IMMEDIATE"); !begun) return Failure(begun.error());
        auto result = body();
        auto committed = result ? run("COMMIT") : SqliteStatus();
        if (result && committed) return result;
        // Some failures have ended the transaction already.
        if (sqlite3_get_autocommit(handle_.get()) == 0) {
            if (const auto undone = run("ROLLBACK"); !undone) return Failure(undone.error());
        }
        if (!committed) return Failure(committed.error());
        return result;
    }

private:
    struct Closer {
        void operator()(sqlite3* handle) const noexcept { sqlite3_close_v2(handle); }
    };

    explicit Sqlite(sqlite3* handle) : handle_(handle) {}

    std::unique_ptr<sqlite3, Closer> handle_;
};

}  // namespace parvela
