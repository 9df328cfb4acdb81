#pragma once

#include "Domain/Ids.h"
#include "Store/Schema.h"

#include <ParvelaKit/Clock.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>

struct sqlite3;
struct sqlite3_stmt;

namespace parvela::service {

/// A statement that SQLite could not carry out: the disk is full, the file is damaged or locked, or the SQL is wrong.
/// Nobody below the request can mend that, so it travels as an exception to the one place that answers the request.
class DatabaseError : public std::runtime_error {
public:
    DatabaseError(int code, const std::string& message) : std::runtime_error(message), code_(code) {}
    int code() const noexcept { return code_; }
    /// Another program holds the file's lock; the same request may succeed later.
    bool isBusy() const noexcept;

private:
    int code_;
};

/// A prepared statement in use. Goes back to the database's cache when destroyed.
class Statement {
public:
    explicit Statement(sqlite3_stmt* statement, bool* inUse) : statement_(statement), inUse_(inUse) {}
    Statement(Statement&& other) noexcept;
    Statement& operator=(Statement&&) = delete;
    ~Statement();

    template <class... Values>
    void bindAll(const Values&... values) {
        int index = 0;
        (bind(++index, values), ...);
    }

    void bind(int index, std::nullptr_t);
    void bind(int index, std::int64_t value);
    void bind(int index, int value) { bind(index, static_cast<std::int64_t>(value)); }
    void bind(int index, bool value) { bind(index, static_cast<std::int64_t>(value)); }
    void bind(int index, std::string_view value);
    void bind(int index, const std::string& value) { bind(index, std::string_view(value)); }
    void bind(int index, const char* value) { bind(index, std::string_view(value)); }
    void bind(int index, Instant value) { bind(index, static_cast<std::int64_t>(value.time_since_epoch().count())); }
    /// Bytes rather than text.
    struct Blob {
        std::string_view bytes;
    };
    void bind(int index, Blob value);
    template <IdPrefix Prefix>
    void bind(int index, Id<Prefix> value) {
        bind(index, value.value);
    }
    template <class T>
    void bind(int index, const std::optional<T>& value) {
        value ? bind(index, *value) : bind(index, nullptr);
    }

    /// True while there is a row.
    bool step();

    bool isNull(int column) const;
    std::int64_t integer(int column) const;
    bool flag(int column) const { return integer(column) != 0; }
    std::string text(int column) const;
    std::string blob(int column) const;
    Instant instant(int column) const { return Instant(std::chrono::milliseconds(integer(column))); }
    template <class IdType>
    IdType id(int column) const {
        return IdType{integer(column)};
    }
    std::optional<std::string> optionalText(int column) const;
    std::optional<std::int64_t> optionalInteger(int column) const;
    std::optional<Instant> optionalInstant(int column) const;
    template <class IdType>
    std::optional<IdType> optionalId(int column) const {
        if (isNull(column)) return {};
        return IdType{integer(column)};
    }

private:
    sqlite3_stmt* statement_;
    bool* inUse_;  ///< null for a statement that is not cached and ends with this object
};

/// One connection to the service's database file, brought to the wanted schema. Single-threaded.
class Database {
public:
    /// Creates the file when missing. ":memory:" gives a private database that lives as long as the object. Only tests
    /// of the way from older versions ask for another schema than the current one.
    explicit Database(const std::filesystem::path& file, int schemaVersion = currentSchemaVersion());
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;
    ~Database();

    template <class... Values>
    Statement query(std::string_view sql, const Values&... values) {
        Statement statement = prepare(sql);
        statement.bindAll(values...);
        return statement;
    }

    /// Runs a statement to its end.
    template <class... Values>
    void run(std::string_view sql, const Values&... values) {
        Statement statement = query(sql, values...);
        while (statement.step()) {
        }
    }

    /// One or more statements without parameters.
    void runScript(const std::string& sql);

    std::int64_t lastInsertedRow() const;
    /// Rows that the last INSERT, UPDATE or DELETE touched.
    std::int64_t changedRows() const;

private:
    friend class Transaction;

    struct Cached {
        sqlite3_stmt* statement = nullptr;
        bool inUse = false;
    };

    Statement prepare(std::string_view sql);
    /// The handle lives on, unseen, until its last statement is finalized; so those of the cache go first.
    void close() noexcept;

    struct StringHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const noexcept { return std::hash<std::string_view>{}(text); }
    };

    sqlite3* handle_ = nullptr;
    std::unordered_map<std::string, std::unique_ptr<Cached>, StringHash, std::equal_to<>> cache_;
    int transactionDepth_ = 0;
    bool rollbackOnly_ = false;  ///< an inner transaction was given up, so the outer one cannot be kept
};

/// All or nothing: what is not committed is rolled back. A transaction inside another one is part of it.
class Transaction {
public:
    explicit Transaction(Database& database);
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    ~Transaction();

    void commit();

private:
    Database& database_;
    bool open_ = true;
};

}  // namespace parvela::service
