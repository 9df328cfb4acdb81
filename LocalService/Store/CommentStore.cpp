#include "Store/CommentStore.h"

namespace parvela::service {

namespace {

constexpr std::string_view selectColumns = "SELECT id, task_id, author_id, body, created_at, edited_at FROM comments ";

CommentRow readComment(const Statement& row) {
    return {.id = row.id<CommentId>(0),
            .task = row.id<TaskId>(1),
            .author = row.id<PersonId>(2),
            .body = row.text(3),
            .at = row.instant(4),
            .edited = !row.isNull(5)};
}

}  // namespace

std::vector<CommentRow> CommentStore::ofTask(TaskId task) {
    std::vector<CommentRow> comments;
    auto rows = database_.query(std::string(selectColumns) + "WHERE task_id = ? ORDER BY id", task);
    while (rows.step()) comments.push_back(readComment(rows));
    return comments;
}

std::optional<CommentRow> CommentStore::find(CommentId id) {
    auto row = database_.query(std::string(selectColumns) + "WHERE id = ?", id);
    if (!row.step()) return {};
    return readComment(row);
}

std::int64_t CommentStore::count(TaskId task) {
    auto row = database_.query("SELECT count(*) FROM comments WHERE task_id = ?", task);
    return row.step() ? row.integer(0) : 0;
}

CommentId CommentStore::add(TaskId task, PersonId author, const std::string& body) {
    database_.run("INSERT INTO comments(task_id, author_id, body, created_at) VALUES (?, ?, ?, ?)", task, author, body,
                  clock_.now());
    return CommentId{database_.lastInsertedRow()};
}

void CommentStore::edit(CommentId id, const std::string& body) {
    database_.run("UPDATE comments SET body = ?, edited_at = ? WHERE id = ?", body, clock_.now(), id);
}

void CommentStore::remove(CommentId id) {
    database_.run("DELETE FROM comments WHERE id = ?", id);
}

}  // namespace parvela::service
