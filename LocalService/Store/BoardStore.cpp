#include "Store/BoardStore.h"

#include <algorithm>

namespace parvela::service {

namespace {

// Parameters: 1 the viewer.
constexpr std::string_view visibleBoards =
    "SELECT b.id, b.name, b.description, b.icon, b.color, b.section, b.private, b.completion_list_id, "
    "EXISTS(SELECT 1 FROM board_stars s WHERE s.account_id = ?1 AND s.board_id = b.id) "
    "FROM boards b WHERE b.deleted_at IS NULL AND (b.private = 0 OR EXISTS("
    "SELECT 1 FROM board_members m WHERE m.board_id = b.id AND m.account_id = ?1)) ";

BoardRow readBoard(const Statement& row) {
    return {.id = row.id<BoardId>(0),
            .name = row.text(1),
            .description = row.text(2),
            .icon = row.text(3),
            .color = row.optionalText(4),
            .section = row.optionalText(5),
            .isPrivate = row.flag(6),
            .starred = row.flag(8),
            .completionList = row.optionalId<ListId>(7)};
}

ListRow readList(const Statement& row) {
    return {.id = row.id<ListId>(0),
            .board = row.id<BoardId>(1),
            .name = row.text(2),
            .open = row.integer(3),
            .total = row.integer(4)};
}

constexpr std::string_view selectLists = "SELECT id, board_id, name, open_count, total_count FROM lists ";

LabelRow readLabel(const Statement& row) {
    return {.id = row.id<LabelId>(0), .board = row.id<BoardId>(1), .name = row.text(2), .tone = row.text(3)};
}

}  // namespace

std::vector<BoardRow> BoardStore::visibleTo(PersonId viewer) {
    std::vector<BoardRow> boards;
    auto rows = database_.query(std::string(visibleBoards) + "ORDER BY b.position, b.id", viewer);
    while (rows.step()) boards.push_back(readBoard(rows));
    return boards;
}

std::optional<BoardRow> BoardStore::find(BoardId id, PersonId viewer) {
    auto row = database_.query(std::string(visibleBoards) + "AND b.id = ?2", viewer, id);
    if (!row.step()) return {};
    return readBoard(row);
}

bool BoardStore::canSee(BoardId id, PersonId person) {
    return find(id, person).has_value();
}

std::vector<PersonId> BoardStore::audience(BoardId id) {
    std::vector<PersonId> people;
    auto rows = database_.query(
        "SELECT a.id FROM accounts a JOIN boards b ON b.id = ?1 WHERE b.private = 0 OR EXISTS("
        "SELECT 1 FROM board_members m WHERE m.board_id = ?1 AND m.account_id = a.id) ORDER BY a.id",
        id);
    while (rows.step()) people.push_back(rows.id<PersonId>(0));
    return people;
}

BoardId BoardStore::create(const std::string& name, PersonId creator) {
    Transaction transaction(database_);
    database_.run(
        "INSERT INTO boards(name, position, created_at, created_by) "
        "VALUES (?, (SELECT ifnull(max(position), 0) + 1 FROM boards), ?, ?)",
        name, clock_.now(), creator);
    const BoardId id{database_.lastInsertedRow()};
    addMember(id, creator);
    transaction.commit();
    return id;
}

void BoardStore::edit(BoardId id, const Edit& edit, PersonId editor) {
    Transaction transaction(database_);
    if (edit.name) database_.run("UPDATE boards SET name = ? WHERE id = ?", *edit.name, id);
    if (edit.description) database_.run("UPDATE boards SET description = ? WHERE id = ?", *edit.description, id);
    if (edit.icon) database_.run("UPDATE boards SET icon = ? WHERE id = ?", *edit.icon, id);
    if (edit.color) database_.run("UPDATE boards SET color = ? WHERE id = ?", *edit.color, id);
    if (edit.section) database_.run("UPDATE boards SET section = ? WHERE id = ?", *edit.section, id);
    if (edit.isPrivate) {
        // Who closes a board must stay inside.
        if (*edit.isPrivate) addMember(id, editor);
        database_.run("UPDATE boards SET private = ? WHERE id = ?", *edit.isPrivate, id);
    }
    if (edit.starred) {
        database_.run(*edit.starred ? "INSERT OR IGNORE INTO board_stars(account_id, board_id) VALUES (?, ?)"
                                    : "DELETE FROM board_stars WHERE account_id = ? AND board_id = ?",
                      editor, id);
    }
    transaction.commit();
}

void BoardStore::addMember(BoardId id, PersonId person) {
    database_.run("INSERT OR IGNORE INTO board_members(board_id, account_id) VALUES (?, ?)", id, person);
}

void BoardStore::setCompletionList(BoardId id, std::optional<ListId> list) {
    database_.run("UPDATE boards SET completion_list_id = ? WHERE id = ?", list, id);
}

void BoardStore::remove(BoardId id) {
    database_.run("UPDATE boards SET deleted_at = ? WHERE id = ?", clock_.now(), id);
}

BoardStore::Counts BoardStore::counts(BoardId id, std::string_view today) {
    Counts counts;
    {
        auto row = database_.query(
            "SELECT ifnull(sum(open_count), 0), ifnull(sum(total_count - open_count), 0) FROM lists WHERE board_id = ?",
            id);
        if (row.step()) counts.open = row.integer(0), counts.done = row.integer(1);
    }
    auto row = database_.query(
        "SELECT count(*) FROM tasks WHERE board_id = ? AND completed_at IS NULL AND deleted_at IS NULL AND due_order < "
        "?",
        id, today);
    if (row.step()) counts.overdue = row.integer(0);
    return counts;
}

std::int64_t BoardStore::openDueBetween(BoardId id, std::string_view firstDay, std::string_view lastDay) {
    auto row = database_.query(
        "SELECT count(*) FROM tasks WHERE board_id = ? AND completed_at IS NULL AND deleted_at IS NULL "
        "AND due_order >= ? AND due_order < ? || '~'",
        id, firstDay, lastDay);
    return row.step() ? row.integer(0) : 0;
}

std::vector<ListRow> BoardStore::lists(BoardId board) {
    std::vector<ListRow> lists;
    auto rows = database_.query(std::string(selectLists) + "WHERE board_id = ? ORDER BY position, id", board);
    while (rows.step()) lists.push_back(readList(rows));
    return lists;
}

std::optional<ListRow> BoardStore::findList(ListId id) {
    auto row = database_.query(std::string(selectLists) + "WHERE id = ?", id);
    if (!row.step()) return {};
    return readList(row);
}

ListId BoardStore::addList(BoardId board, const std::string& name) {
    database_.run(
        "INSERT INTO lists(board_id, name, position) "
        "VALUES (?1, ?2, (SELECT ifnull(max(position), 0) + 1 FROM lists WHERE board_id = ?1))",
        board, name);
    return ListId{database_.lastInsertedRow()};
}

void BoardStore::renameList(ListId id, const std::string& name) {
    database_.run("UPDATE lists SET name = ? WHERE id = ?", name, id);
}

void BoardStore::moveList(ListId id, std::size_t index) {
    const auto list = findList(id);
    if (!list) return;
    std::vector<ListId> order;
    for (const ListRow& each : lists(list->board)) {
        if (each.id != id) order.push_back(each.id);
    }
    order.insert(order.begin() + static_cast<std::ptrdiff_t>(std::min(index, order.size())), id);
    Transaction transaction(database_);
    int position = 0;
    for (const ListId each : order) database_.run("UPDATE lists SET position = ? WHERE id = ?", ++position, each);
    transaction.commit();
}

void BoardStore::removeList(ListId id) {
    Transaction transaction(database_);
    database_.run(
        "UPDATE tasks SET list_id = (SELECT o.id FROM lists o JOIN lists l ON l.id = ?1 AND o.board_id = l.board_id "
        "WHERE o.id <> ?1 ORDER BY o.position, o.id LIMIT 1) WHERE list_id = ?1 AND deleted_at IS NOT NULL",
        id);
    database_.run("DELETE FROM lists WHERE id = ?", id);
    transaction.commit();
}

std::vector<LabelRow> BoardStore::labels(BoardId board) {
    std::vector<LabelRow> labels;
    auto rows = database_.query("SELECT id, board_id, name, tone FROM labels WHERE board_id = ? ORDER BY id", board);
    while (rows.step()) labels.push_back(readLabel(rows));
    return labels;
}

std::optional<LabelRow> BoardStore::findLabel(LabelId id) {
    auto row = database_.query("SELECT id, board_id, name, tone FROM labels WHERE id = ?", id);
    if (!row.step()) return {};
    return readLabel(row);
}

LabelId BoardStore::addLabel(BoardId board, const std::string& name, const std::string& tone) {
    database_.run("INSERT INTO labels(board_id, name, tone) VALUES (?, ?, ?)", board, name, tone);
    return LabelId{database_.lastInsertedRow()};
}

void BoardStore::editLabel(LabelId id, const std::string& name, const std::string& tone) {
    database_.run("UPDATE labels SET name = ?, tone = ? WHERE id = ?", name, tone, id);
}

void BoardStore::removeLabel(LabelId id) {
    database_.run("DELETE FROM labels WHERE id = ?", id);
}

}  // namespace parvela::service
