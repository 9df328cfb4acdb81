#include "Store/Schema.h"

#include "Store/Database.h"

#include <array>
#include <stdexcept>
#include <string>

namespace parvela::service {

namespace {

// A published version is never edited: changes go into a new one at the end of versions.
//
// Dates are text "YYYY-MM-DD", times of day "HH:MM", moments milliseconds since 1970. A task is done when it has a
// completion moment, and deleted when it has a deletion moment. "due_order" sorts by due date and time, tasks without a
// date last.
//
// What every client asks for again and again is answered from narrow indexes and counters, never by looking at all
// tasks: "tasks_open" and "tasks_done" hold each living task once; "task_assignees" repeats the three columns that "my
// tasks" is filtered and sorted by; "lists" counts its tasks. Triggers keep the copies right, whoever writes.
constexpr const char* version1 = R"sql(
CREATE TABLE workspace(
    id INTEGER PRIMARY KEY CHECK(id = 1),
    name TEXT NOT NULL,
    created_at INTEGER NOT NULL);

CREATE TABLE accounts(
    id INTEGER PRIMARY KEY,
    name TEXT NOT NULL,
    email TEXT NOT NULL COLLATE NOCASE UNIQUE,
    password_hash TEXT NOT NULL,
    color TEXT NOT NULL,
    role TEXT NOT NULL,
    time_zone TEXT,
    created_at INTEGER NOT NULL);

CREATE TABLE sessions(
    hash BLOB PRIMARY KEY,
    account_id INTEGER NOT NULL REFERENCES accounts ON DELETE CASCADE,
    created_at INTEGER NOT NULL,
    expires_at INTEGER NOT NULL) WITHOUT ROWID;
CREATE INDEX sessions_expiry ON sessions(expires_at);

CREATE TABLE handoff_codes(
    hash BLOB PRIMARY KEY,
    account_id INTEGER NOT NULL REFERENCES accounts ON DELETE CASCADE,
    expires_at INTEGER NOT NULL) WITHOUT ROWID;

CREATE TABLE tokens(
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    hash BLOB NOT NULL UNIQUE,
    account_id INTEGER NOT NULL REFERENCES accounts ON DELETE CASCADE,
    kind TEXT NOT NULL,
    name TEXT NOT NULL,
    hint TEXT NOT NULL,
    device_id TEXT,
    can_write INTEGER NOT NULL,
    created_at INTEGER NOT NULL,
    last_used_at INTEGER);
CREATE INDEX tokens_by_account ON tokens(account_id);

CREATE TABLE push_devices(
    token TEXT PRIMARY KEY,
    account_id INTEGER NOT NULL REFERENCES accounts ON DELETE CASCADE,
    platform TEXT NOT NULL,
    environment TEXT NOT NULL,
    bundle_id TEXT NOT NULL,
    registered_at INTEGER NOT NULL) WITHOUT ROWID;

CREATE TABLE boards(
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    name TEXT NOT NULL,
    description TEXT NOT NULL DEFAULT '',
    icon TEXT NOT NULL DEFAULT '',
    color TEXT,
    section TEXT,
    private INTEGER NOT NULL DEFAULT 0,
    position INTEGER NOT NULL,
    completion_list_id INTEGER REFERENCES lists ON DELETE SET NULL,
    created_at INTEGER NOT NULL,
    created_by INTEGER REFERENCES accounts ON DELETE SET NULL,
    deleted_at INTEGER);

CREATE TABLE board_members(
    board_id INTEGER NOT NULL REFERENCES boards ON DELETE CASCADE,
    account_id INTEGER NOT NULL REFERENCES accounts ON DELETE CASCADE,
    PRIMARY KEY(board_id, account_id)) WITHOUT ROWID;

CREATE TABLE board_stars(
    account_id INTEGER NOT NULL REFERENCES accounts ON DELETE CASCADE,
    board_id INTEGER NOT NULL REFERENCES boards ON DELETE CASCADE,
    PRIMARY KEY(account_id, board_id)) WITHOUT ROWID;

CREATE TABLE lists(
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    board_id INTEGER NOT NULL REFERENCES boards ON DELETE CASCADE,
    name TEXT NOT NULL,
    position INTEGER NOT NULL,
    open_count INTEGER NOT NULL DEFAULT 0,
    total_count INTEGER NOT NULL DEFAULT 0);
CREATE INDEX lists_by_board ON lists(board_id, position);

CREATE TABLE labels(
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    board_id INTEGER NOT NULL REFERENCES boards ON DELETE CASCADE,
    name TEXT NOT NULL,
    tone TEXT NOT NULL);
CREATE INDEX labels_by_board ON labels(board_id);

CREATE TABLE tasks(
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    board_id INTEGER NOT NULL REFERENCES boards ON DELETE CASCADE,
    list_id INTEGER NOT NULL REFERENCES lists,
    list_before_done INTEGER,
    parent_id INTEGER REFERENCES tasks ON DELETE SET NULL,
    title TEXT NOT NULL,
    description TEXT NOT NULL DEFAULT '',
    priority INTEGER NOT NULL DEFAULT 0,
    start_date TEXT,
    due_date TEXT,
    due_time TEXT,
    due_order TEXT NOT NULL
        GENERATED ALWAYS AS (ifnull(due_date, '9999-99-99') || ' ' || ifnull(due_time, '99:99')) VIRTUAL,
    position INTEGER NOT NULL,
    estimate_minutes INTEGER,
    tracked_ms INTEGER NOT NULL DEFAULT 0,
    created_at INTEGER NOT NULL,
    created_by INTEGER REFERENCES accounts ON DELETE SET NULL,
    completed_at INTEGER,
    deleted_at INTEGER);
CREATE INDEX tasks_open ON tasks(board_id, due_order, id) WHERE completed_at IS NULL AND deleted_at IS NULL;
CREATE INDEX tasks_done ON tasks(board_id, completed_at) WHERE completed_at IS NOT NULL AND deleted_at IS NULL;
CREATE INDEX tasks_done_due ON tasks(board_id, due_order)
    WHERE completed_at IS NOT NULL AND deleted_at IS NULL AND due_date IS NOT NULL;
CREATE INDEX tasks_in_list ON tasks(list_id, position);
CREATE INDEX tasks_deleted ON tasks(deleted_at) WHERE deleted_at IS NOT NULL;
CREATE INDEX tasks_parent ON tasks(parent_id) WHERE parent_id IS NOT NULL;

CREATE TABLE task_assignees(
    task_id INTEGER NOT NULL REFERENCES tasks ON DELETE CASCADE,
    account_id INTEGER NOT NULL REFERENCES accounts ON DELETE CASCADE,
    due_order TEXT,
    completed_at INTEGER,
    deleted_at INTEGER,
    PRIMARY KEY(task_id, account_id)) WITHOUT ROWID;
CREATE INDEX assigned_open ON task_assignees(account_id, due_order, task_id)
    WHERE completed_at IS NULL AND deleted_at IS NULL;
CREATE INDEX assigned_done ON task_assignees(account_id, completed_at, due_order, task_id)
    WHERE completed_at IS NOT NULL AND deleted_at IS NULL;
CREATE INDEX assigned_done_due ON task_assignees(account_id, due_order, task_id)
    WHERE completed_at IS NOT NULL AND deleted_at IS NULL AND due_order < '9999';

CREATE TABLE task_labels(
    task_id INTEGER NOT NULL REFERENCES tasks ON DELETE CASCADE,
    label_id INTEGER NOT NULL REFERENCES labels ON DELETE CASCADE,
    PRIMARY KEY(task_id, label_id)) WITHOUT ROWID;
CREATE INDEX task_labels_by_label ON task_labels(label_id);

CREATE TABLE task_blockers(
    task_id INTEGER NOT NULL REFERENCES tasks ON DELETE CASCADE,
    blocker_id INTEGER NOT NULL REFERENCES tasks ON DELETE CASCADE,
    PRIMARY KEY(task_id, blocker_id)) WITHOUT ROWID;
CREATE INDEX task_blockers_by_blocker ON task_blockers(blocker_id);

CREATE TABLE checklists(
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    task_id INTEGER NOT NULL REFERENCES tasks ON DELETE CASCADE,
    title TEXT NOT NULL);
CREATE INDEX checklists_by_task ON checklists(task_id);

CREATE TABLE checklist_items(
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    checklist_id INTEGER NOT NULL REFERENCES checklists ON DELETE CASCADE,
    text TEXT NOT NULL,
    done INTEGER NOT NULL DEFAULT 0);
CREATE INDEX checklist_items_by_checklist ON checklist_items(checklist_id);

CREATE TABLE comments(
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    task_id INTEGER NOT NULL REFERENCES tasks ON DELETE CASCADE,
    author_id INTEGER NOT NULL REFERENCES accounts ON DELETE CASCADE,
    body TEXT NOT NULL,
    created_at INTEGER NOT NULL,
    edited_at INTEGER);
CREATE INDEX comments_by_task ON comments(task_id);

CREATE TABLE activity(
    id INTEGER PRIMARY KEY,
    task_id INTEGER NOT NULL REFERENCES tasks ON DELETE CASCADE,
    account_id INTEGER REFERENCES accounts ON DELETE SET NULL,
    text TEXT NOT NULL,
    at INTEGER NOT NULL);
CREATE INDEX activity_by_task ON activity(task_id);

CREATE TABLE files(
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    task_id INTEGER NOT NULL REFERENCES tasks ON DELETE CASCADE,
    name TEXT NOT NULL,
    mime TEXT NOT NULL,
    size INTEGER NOT NULL,
    created_at INTEGER NOT NULL,
    created_by INTEGER REFERENCES accounts ON DELETE SET NULL);
CREATE INDEX files_by_task ON files(task_id);
CREATE TABLE file_contents(
    file_id INTEGER PRIMARY KEY REFERENCES files ON DELETE CASCADE,
    bytes BLOB NOT NULL);

CREATE TABLE timers(
    account_id INTEGER PRIMARY KEY REFERENCES accounts ON DELETE CASCADE,
    task_id INTEGER NOT NULL REFERENCES tasks ON DELETE CASCADE,
    started_at INTEGER NOT NULL);
CREATE INDEX timers_by_task ON timers(task_id);

CREATE TABLE notifications(
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    account_id INTEGER NOT NULL REFERENCES accounts ON DELETE CASCADE,
    kind TEXT NOT NULL,
    text TEXT NOT NULL,
    actor_id INTEGER REFERENCES accounts ON DELETE SET NULL,
    task_id INTEGER REFERENCES tasks ON DELETE CASCADE,
    at INTEGER NOT NULL,
    read_at INTEGER);
CREATE INDEX notifications_by_account ON notifications(account_id, id);
CREATE INDEX notifications_unread ON notifications(account_id) WHERE read_at IS NULL;
CREATE INDEX notifications_by_task ON notifications(task_id);

CREATE TRIGGER tasks_inserted AFTER INSERT ON tasks BEGIN
    UPDATE lists SET total_count = total_count + (NEW.deleted_at IS NULL),
        open_count = open_count + (NEW.deleted_at IS NULL AND NEW.completed_at IS NULL)
        WHERE id = NEW.list_id;
END;
CREATE TRIGGER tasks_moved AFTER UPDATE OF list_id, completed_at, deleted_at ON tasks BEGIN
    UPDATE lists SET total_count = total_count - (OLD.deleted_at IS NULL),
        open_count = open_count - (OLD.deleted_at IS NULL AND OLD.completed_at IS NULL)
        WHERE id = OLD.list_id;
    UPDATE lists SET total_count = total_count + (NEW.deleted_at IS NULL),
        open_count = open_count + (NEW.deleted_at IS NULL AND NEW.completed_at IS NULL)
        WHERE id = NEW.list_id;
END;
CREATE TRIGGER tasks_removed AFTER DELETE ON tasks BEGIN
    UPDATE lists SET total_count = total_count - (OLD.deleted_at IS NULL),
        open_count = open_count - (OLD.deleted_at IS NULL AND OLD.completed_at IS NULL)
        WHERE id = OLD.list_id;
END;
CREATE TRIGGER tasks_assigned AFTER INSERT ON task_assignees BEGIN
    UPDATE task_assignees SET (due_order, completed_at, deleted_at) =
        (SELECT due_order, completed_at, deleted_at FROM tasks WHERE id = NEW.task_id)
        WHERE task_id = NEW.task_id AND account_id = NEW.account_id;
END;
CREATE TRIGGER tasks_rescheduled AFTER UPDATE OF due_date, due_time, completed_at, deleted_at ON tasks BEGIN
    UPDATE task_assignees
        SET due_order = NEW.due_order, completed_at = NEW.completed_at, deleted_at = NEW.deleted_at
        WHERE task_id = NEW.id;
END;
)sql";

// Full-text search over titles and descriptions. The text itself stays in "tasks".
constexpr const char* version2 = R"sql(
CREATE VIRTUAL TABLE task_search USING fts5(
    title, description, content = 'tasks', content_rowid = 'id', prefix = '2 3',
    tokenize = 'unicode61 remove_diacritics 2');
CREATE TRIGGER task_search_inserted AFTER INSERT ON tasks BEGIN
    INSERT INTO task_search(rowid, title, description) VALUES (NEW.id, NEW.title, NEW.description);
END;
CREATE TRIGGER task_search_removed AFTER DELETE ON tasks BEGIN
    INSERT INTO task_search(task_search, rowid, title, description)
        VALUES ('delete', OLD.id, OLD.title, OLD.description);
END;
CREATE TRIGGER task_search_updated AFTER UPDATE OF title, description ON tasks BEGIN
    INSERT INTO task_search(task_search, rowid, title, description)
        VALUES ('delete', OLD.id, OLD.title, OLD.description);
    INSERT INTO task_search(rowid, title, description) VALUES (NEW.id, NEW.title, NEW.description);
END;
INSERT INTO task_search(task_search) VALUES ('rebuild');
)sql";

constexpr std::array versions = {version1, version2};

}  // namespace

int currentSchemaVersion() {
    return static_cast<int>(versions.size());
}

void migrate(Database& database, int version) {
    int present = 0;
    {
        auto row = database.query("PRAGMA user_version");
        if (row.step()) present = static_cast<int>(row.integer(0));
    }
    if (present > currentSchemaVersion()) {
        throw std::runtime_error("This workspace was last opened by a newer Parvela. Install that version to open it.");
    }
    while (present < version) {
        Transaction transaction(database);
        database.runScript(versions[static_cast<std::size_t>(present)]);
        ++present;
        database.runScript("PRAGMA user_version = " + std::to_string(present));
        transaction.commit();
    }
}

}  // namespace parvela::service
