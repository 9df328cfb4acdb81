#include "Store/TaskQueries.h"

#include <algorithm>

namespace parvela::service {

namespace {

// Parameters of all list queries: 1 viewer, 2 board or null, 3 limit, 4 first due order, 5 end of due order, 6 since.
constexpr const char* visibleBoard =
    "b.deleted_at IS NULL AND (?2 IS NULL OR b.id = ?2) AND (b.private = 0 OR EXISTS("
    "SELECT 1 FROM board_members m WHERE m.board_id = b.id AND m.account_id = ?1))";

/// Board by board: the first rows of each board's index range, then the first of those. A sort over whole boards would
/// grow with the table.
std::string perBoard(const std::string& condition, const std::string& order) {
    return "SELECT t.id FROM boards b CROSS JOIN tasks t ON t.id IN (SELECT t.id FROM tasks t WHERE t.board_id = b.id "
           "AND " +
           condition + " ORDER BY " + order + " LIMIT ?3) WHERE " + visibleBoard + " ORDER BY " + order +
           ", t.id LIMIT ?3";
}

std::string perAssignee(const std::string& condition, const std::string& order) {
    return "SELECT a.task_id FROM task_assignees a CROSS JOIN tasks t ON t.id = a.task_id CROSS JOIN boards b "
           "ON b.id = t.board_id WHERE a.account_id = ?1 AND " +
           condition + " AND " + visibleBoard + " ORDER BY " + order + ", a.task_id LIMIT ?3";
}

struct Statements {
    std::string openOnBoards = perBoard(
        "t.completed_at IS NULL AND t.deleted_at IS NULL AND t.due_order >= ?4 AND t.due_order < ?5", "t.due_order");
    std::string openMine = perAssignee(
        "a.completed_at IS NULL AND a.deleted_at IS NULL AND a.due_order >= ?4 AND a.due_order < ?5", "a.due_order");
    std::string completedOnBoards = perBoard(
        "t.completed_at IS NOT NULL AND t.deleted_at IS NULL AND t.completed_at >= ?6 AND t.due_order >= ?4 AND "
        "t.due_order < ?5",
        "t.completed_at DESC");
    std::string completedMine = perAssignee(
        "a.completed_at IS NOT NULL AND a.deleted_at IS NULL AND a.completed_at >= ?6 AND a.due_order >= ?4 AND "
        "a.due_order < ?5",
        "a.completed_at DESC");
    std::string completedDueOnBoards = perBoard(
        "t.completed_at IS NOT NULL AND t.deleted_at IS NULL AND t.due_date IS NOT NULL AND t.due_order >= ?4 "
        "AND t.due_order < ?5",
        "t.due_order");
    std::string completedDueMine = perAssignee(
        "a.completed_at IS NOT NULL AND a.deleted_at IS NULL AND a.due_order < '9999' AND a.due_order >= ?4 "
        "AND a.due_order < ?5",
        "a.due_order");
};

const Statements& statementsInUse() {
    static const Statements statements;
    return statements;
}

/// Full-text hits are read newest first; only that many are looked at before the best are picked.
constexpr std::string_view searchStatement =
    "SELECT t.id, t.completed_at IS NOT NULL FROM task_search s CROSS JOIN tasks t ON t.id = s.rowid "
    "CROSS JOIN boards b ON b.id = t.board_id WHERE s.task_search MATCH ?4 AND t.deleted_at IS NULL "
    "AND b.deleted_at IS NULL AND (b.private = 0 OR EXISTS("
    "SELECT 1 FROM board_members m WHERE m.board_id = b.id AND m.account_id = ?1)) ORDER BY s.rowid DESC LIMIT ?3";
constexpr int searchCandidates = 4;

std::string first(const TaskQueries::DueRange& due) {
    return due.first.value_or("");
}
/// "~" sorts behind every due order.
std::string end(const TaskQueries::DueRange& due) {
    return due.end.value_or("~");
}

std::vector<TaskId> readIds(Statement rows) {
    std::vector<TaskId> ids;
    while (rows.step()) ids.push_back(rows.id<TaskId>(0));
    return ids;
}

/// Each word quoted, so that nothing the user types is an operator of the search language.
std::string matchExpression(std::string_view text) {
    std::string expression;
    std::string word;
    const auto finish = [&] {
        if (word.empty()) return;
        if (!expression.empty()) expression += ' ';
        expression += '"' + word + '"';
        word.clear();
    };
    for (const char c : text) {
        const bool separator = c == '"' || static_cast<unsigned char>(c) <= ' ';
        separator ? finish() : word.push_back(c);
    }
    finish();
    if (!expression.empty()) expression += '*';
    return expression;
}

}  // namespace

std::vector<TaskId> TaskQueries::open(const Scope& scope, const DueRange& due, int limit) {
    const auto& sql = scope.mine ? statementsInUse().openMine : statementsInUse().openOnBoards;
    return readIds(database_.query(sql, scope.viewer, scope.board, limit, first(due), end(due)));
}

std::vector<TaskId> TaskQueries::completedSince(const Scope& scope, Instant since, const DueRange& due, int limit) {
    const auto& sql = scope.mine ? statementsInUse().completedMine : statementsInUse().completedOnBoards;
    return readIds(database_.query(sql, scope.viewer, scope.board, limit, first(due), end(due), since));
}

std::vector<TaskId> TaskQueries::completedDue(const Scope& scope, const DueRange& due, int limit) {
    const auto& sql = scope.mine ? statementsInUse().completedDueMine : statementsInUse().completedDueOnBoards;
    return readIds(database_.query(sql, scope.viewer, scope.board, limit, first(due), end(due)));
}

std::int64_t TaskQueries::countMine(PersonId viewer, const DueRange& due) {
    auto row = database_.query(
        "SELECT count(*) FROM task_assignees WHERE account_id = ? AND completed_at IS NULL AND deleted_at IS NULL "
        "AND due_order >= ? AND due_order < ?",
        viewer, first(due), end(due));
    return row.step() ? row.integer(0) : 0;
}

std::int64_t TaskQueries::countMineCompletedSince(PersonId viewer, Instant since) {
    auto row = database_.query(
        "SELECT count(*) FROM task_assignees WHERE account_id = ? AND completed_at IS NOT NULL AND deleted_at IS NULL "
        "AND completed_at >= ?",
        viewer, since);
    return row.step() ? row.integer(0) : 0;
}

std::vector<TaskId> TaskQueries::search(PersonId viewer, std::string_view text, int limit) {
    const std::string expression = matchExpression(text);
    if (expression.empty()) return {};
    std::vector<TaskId> openOnes, doneOnes;
    auto rows = database_.query(searchStatement, viewer, nullptr, limit * searchCandidates, expression);
    while (rows.step()) (rows.flag(1) ? doneOnes : openOnes).push_back(rows.id<TaskId>(0));
    openOnes.insert(openOnes.end(), doneOnes.begin(), doneOnes.end());
    openOnes.resize(std::min(openOnes.size(), static_cast<std::size_t>(limit)));
    return openOnes;
}

std::vector<std::string> TaskQueries::statements() {
    const Statements& sql = statementsInUse();
    return {sql.openOnBoards,         sql.openMine,         sql.completedOnBoards,       sql.completedMine,
            sql.completedDueOnBoards, sql.completedDueMine, std::string(searchStatement)};
}

}  // namespace parvela::service
