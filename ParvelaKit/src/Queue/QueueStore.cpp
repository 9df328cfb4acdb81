#include "Queue/QueueStore.h"

#include <ParvelaKit/Json/Decoder.h>
#include <ParvelaKit/Json/Encoder.h>

#include <array>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include <fmt/format.h>

namespace parvela {
namespace {

constexpr std::int64_t schemaVersion = 1;

constexpr std::array schema = {
    // state: 0 waiting, 1 sending, 2 failed. Moments are milliseconds since 1970. The drafts are request bodies, made
    // when
    // the line was typed, so that what is sent later is what the user saw.
    "CREATE TABLE lines("
    "id INTEGER PRIMARY KEY AUTOINCREMENT, site TEXT NOT NULL, line TEXT NOT NULL, board_id TEXT NOT NULL, "
    "board_name TEXT NOT NULL, day TEXT NOT NULL, created_at INTEGER NOT NULL, task TEXT NOT NULL, "
    "task_without_names TEXT, names_repeat INTEGER NOT NULL, state INTEGER NOT NULL, attempts INTEGER NOT NULL, "
    "setbacks INTEGER NOT NULL DEFAULT 0, lost_answers INTEGER NOT NULL DEFAULT 0, "
    "not_before INTEGER NOT NULL DEFAULT 0, last_failure TEXT) STRICT",
    "CREATE INDEX lines_in_turn ON lines(site, state, setbacks, id)",
    "CREATE INDEX lines_by_state ON lines(state)",
    "CREATE TABLE closed_sites(site TEXT PRIMARY KEY, until INTEGER NOT NULL) STRICT",
    "PRAGMA user_version = 1",
};

constexpr std::int64_t waiting = 0;
constexpr std::int64_t sending = 1;
constexpr std::int64_t failed = 2;

std::int64_t millis(Instant instant) {
    return instant.time_since_epoch().count();
}
Instant instant(std::int64_t millis) {
    return Instant(std::chrono::milliseconds(millis));
}

SqliteStatus createSchema(Sqlite& database) {
    return database.transaction([&]() -> SqliteStatus {
        const auto version = database.number("PRAGMA user_version");
        if (!version) return Failure(version.error());
        if (*version != 0) return {};  // another program was faster
        for (const char* statement : schema) {
            if (const auto done = database.run(statement); !done) return done;
        }
        return {};
    });
}

/// Every page and every column can be read.
SqliteStatus checkWhole(Sqlite& database) {
    auto check = database.prepare("PRAGMA quick_check(1)");
    if (!check) return Failure(check.error());
    const auto row = check->step();
    if (!row) return Failure(row.error());
    if (!*row || check->text(0) != "ok") return Failure(SqliteError{SQLITE_CORRUPT});
    const auto columns = database.prepare(
        "SELECT id, site, line, board_id, board_name, day, created_at, task, task_without_names, names_repeat, state, "
        "attempts, setbacks, lost_answers, not_before, last_failure, (SELECT until FROM closed_sites) FROM lines");
    if (!columns) return Failure(SqliteError{SQLITE_CORRUPT});
    return {};
}

QueueStore::OpenFailure openFailure(SqliteError error) {
    return {error.isDamage() ? QueueStore::OpenProblem::damaged : QueueStore::OpenProblem::unusable, error.text()};
}

NewTask storedTask(const std::string& json, const std::string& line, const std::string& board) {
    if (auto task = json::decode<NewTask>(json)) return *std::move(task);
    // Nothing typed is lost, even when somebody edited the file.
    return NewTask{.board = board, .title = line, .priority = "none"};
}

}  // namespace

Result<QueueStore, QueueStore::OpenFailure> QueueStore::open(const std::filesystem::path& file,
                                                             std::chrono::milliseconds patience) {
    std::error_code ignored;
    std::filesystem::create_directories(file.parent_path(), ignored);
    // Made here, because what users type is nobody else's business and SQLite would use the default permissions.
    if (const int made = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600); made >= 0) ::close(made);

    auto database = Sqlite::open(file, patience);
    if (!database) return Failure(openFailure(database.error()));
    const auto version = database->number("PRAGMA user_version");
    if (!version) return Failure(openFailure(version.error()));
    if (*version > schemaVersion) return Failure(OpenFailure{OpenProblem::newerVersion, {}});

    if (const auto mode = database->number("PRAGMA journal_mode = WAL"); !mode)
        return Failure(openFailure(mode.error()));
    if (const auto set = database->run("PRAGMA synchronous = FULL"); !set) return Failure(openFailure(set.error()));
    if (*version == 0) {
        if (const auto made = createSchema(*database); !made) return Failure(openFailure(made.error()));
    }
    if (const auto whole = checkWhole(*database); !whole) return Failure(openFailure(whole.error()));
    return QueueStore(*std::move(database));
}

Result<std::int64_t, SqliteError> QueueStore::insert(const NewQueuedLine& line, QueuedLine::State state) {
    const bool isSending = state == QueuedLine::State::sending;
    std::optional<std::string> withoutNames;
    if (line.draft.taskWithoutNames != line.draft.task) withoutNames = json::encode(line.draft.taskWithoutNames);
    const std::string task = json::encode(line.draft.task);
    const std::string day = line.day.text();
    const auto inserted = database_.run(
        "INSERT INTO lines(site, line, board_id, board_name, day, created_at, task, task_without_names, names_repeat, "
        "state, attempts) VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
        line.site, line.line, line.boardId, line.boardName, day, millis(line.createdAt), task, withoutNames,
        std::int64_t{line.draft.namesRepeat}, isSending ? sending : waiting, std::int64_t{isSending});
    if (!inserted) return Failure(inserted.error());
    return database_.lastRow();
}

SqliteStatus QueueStore::settle(const Settlement& settlement) {
    if (settlement.kind == Settlement::Kind::remove) {
        return database_.run("DELETE FROM lines WHERE id = ?", settlement.id);
    }
    return database_.run(
        "UPDATE lines SET state = ?, last_failure = ?, setbacks = setbacks + ?, lost_answers = lost_answers + ?, "
        "not_before = ? WHERE id = ?",
        settlement.kind == Settlement::Kind::fail ? failed : waiting, settlement.failure,
        std::int64_t{settlement.isSetback}, std::int64_t{settlement.answerLost}, millis(settlement.notBefore),
        settlement.id);
}

Result<std::optional<TakenLine>, SqliteError> QueueStore::settleAndTake(const std::optional<Settlement>& settlement,
                                                                        const std::string& site, Instant now) {
    return database_.transaction([&]() -> Result<std::optional<TakenLine>, SqliteError> {
        if (settlement) {
            if (const auto settled = settle(*settlement); !settled) return Failure(settled.error());
        }
        return take(site, now);
    });
}

Result<std::optional<TakenLine>, SqliteError> QueueStore::take(const std::string& site, Instant now) {
    auto due = database_.prepare(
        "SELECT id, setbacks, line, board_id, task, task_without_names, names_repeat FROM lines "
        "WHERE site = ? AND state = ? AND not_before <= ? ORDER BY setbacks, id LIMIT 1");
    if (!due) return Failure(due.error());
    const auto row = due->bind(site, waiting, millis(now)).step();
    if (!row) return Failure(row.error());
    if (!*row) return std::nullopt;

    TakenLine taken{.id = due->integer(0), .setbacks = due->integer(1)};
    const std::string line = due->text(2);
    const std::string board = due->text(3);
    taken.draft.task = storedTask(due->text(4), line, board);
    const auto withoutNames = due->optionalText(5);
    taken.draft.taskWithoutNames = withoutNames ? storedTask(*withoutNames, line, board) : taken.draft.task;
    taken.draft.namesRepeat = due->integer(6) != 0;

    const auto marked =
        database_.run("UPDATE lines SET state = ?, attempts = attempts + 1 WHERE id = ?", sending, taken.id);
    if (!marked) return Failure(marked.error());
    return taken;
}

SqliteStatus QueueStore::recoverInterrupted() {
    return database_.run("UPDATE lines SET state = ?, lost_answers = lost_answers + 1, not_before = 0 WHERE state = ?",
                         waiting, sending);
}

Result<bool, SqliteError> QueueStore::takeWaiting(std::int64_t id) {
    const auto taken = database_.run("UPDATE lines SET state = ?, attempts = attempts + 1 WHERE id = ? AND state = ?",
                                     sending, id, waiting);
    if (!taken) return Failure(taken.error());
    return database_.changedRows() > 0;
}

Result<bool, SqliteError> QueueStore::retryFailed(std::optional<std::int64_t> id) {
    constexpr const char* again = "UPDATE lines SET state = ?, setbacks = 0, not_before = 0 WHERE state = ?";
    const auto changed = id ? database_.run(std::string(again) + " AND id = ?", waiting, failed, *id)
                            : database_.run(again, waiting, failed);
    if (!changed) return Failure(changed.error());
    return database_.changedRows() > 0;
}

Result<bool, SqliteError> QueueStore::discard(std::int64_t id) {
    const auto removed = database_.run("DELETE FROM lines WHERE id = ? AND state <> ?", id, sending);
    if (!removed) return Failure(removed.error());
    return database_.changedRows() > 0;
}

SqliteStatus QueueStore::forgetPauses(const std::string& site) {
    return database_.run("UPDATE lines SET not_before = 0 WHERE site = ? AND state = ? AND not_before > 0", site,
                         waiting);
}

Result<Instant, SqliteError> QueueStore::siteClosedUntil(const std::string& site) {
    auto statement = database_.prepare("SELECT until FROM closed_sites WHERE site = ?");
    if (!statement) return Failure(statement.error());
    const auto row = statement->bind(site).step();
    if (!row) return Failure(row.error());
    return *row ? instant(statement->integer(0)) : Instant{};
}

SqliteStatus QueueStore::closeSiteUntil(const std::string& site, Instant until) {
    return database_.run("INSERT OR REPLACE INTO closed_sites(site, until) VALUES(?, ?)", site, millis(until));
}

Result<std::optional<Instant>, SqliteError> QueueStore::nextDue(const std::string& site) {
    auto statement = database_.prepare("SELECT count(*), min(not_before) FROM lines WHERE site = ? AND state = ?");
    if (!statement) return Failure(statement.error());
    const auto row = statement->bind(site, waiting).step();
    if (!row) return Failure(row.error());
    if (statement->integer(0) == 0) return std::nullopt;
    return instant(statement->integer(1));
}

Result<QueueCounts, SqliteError> QueueStore::counts() {
    auto statement = database_.prepare("SELECT state, count(*) FROM lines GROUP BY state");
    if (!statement) return Failure(statement.error());
    QueueCounts counts;
    for (;;) {
        const auto row = statement->step();
        if (!row) return Failure(row.error());
        if (!*row) return counts;
        const std::int64_t state = statement->integer(0);
        auto& count = state == waiting ? counts.waiting : state == sending ? counts.sending : counts.failed;
        count = static_cast<std::size_t>(statement->integer(1));
    }
}

Result<std::vector<QueuedLine>, SqliteError> QueueStore::lines(std::size_t count, std::size_t offset) {
    auto statement = database_.prepare(
        "SELECT id, line, board_id, board_name, day, created_at, state, attempts, lost_answers, last_failure FROM "
        "lines "
        "ORDER BY state <> ?, id LIMIT ? OFFSET ?");
    if (!statement) return Failure(statement.error());
    statement->bind(failed, static_cast<std::int64_t>(count), static_cast<std::int64_t>(offset));
    std::vector<QueuedLine> lines;
    for (;;) {
        const auto row = statement->step();
        if (!row) return Failure(row.error());
        if (!*row) return lines;
        const std::int64_t state = statement->integer(6);
        lines.push_back({.id = statement->integer(0),
                         .line = statement->text(1),
                         .boardId = statement->text(2),
                         .boardName = statement->text(3),
                         .day = CivilDate::parse(statement->text(4)).value_or(CivilDate()),
                         .createdAt = instant(statement->integer(5)),
                         .state = state == waiting   ? QueuedLine::State::waiting
                                  : state == sending ? QueuedLine::State::sending
                                                     : QueuedLine::State::failed,
                         .attempts = statement->integer(7),
                         .lostAnswers = statement->integer(8),
                         .lastFailure = statement->optionalText(9)});
    }
}

std::optional<std::filesystem::path> setAside(const std::filesystem::path& file, Instant now) {
    const std::string suffix = fmt::format(".damaged-{}", millis(now));
    std::filesystem::path kept = file;
    kept += suffix;
    std::error_code error;
    for (int more = 2; std::filesystem::exists(kept, error); ++more)
        kept = file.string() + suffix + fmt::format("-{}", more);
    std::filesystem::rename(file, kept, error);
    if (error) return std::nullopt;
    // What the write-ahead log holds belongs to the damaged file; a new database must not read it.
    for (const char* part : {"-wal", "-shm"}) {
        std::error_code absent;
        std::filesystem::rename(file.string() + part, kept.string() + part, absent);
    }
    return kept;
}

}  // namespace parvela
