#include "Store/ChecklistStore.h"

namespace parvela::service {

std::vector<ChecklistRow> ChecklistStore::ofTask(TaskId task) {
    std::vector<ChecklistRow> checklists;
    auto rows = database_.query(
        "SELECT c.id, c.title, i.id, i.text, i.done FROM checklists c LEFT JOIN checklist_items i ON i.checklist_id = "
        "c.id "
        "WHERE c.task_id = ? ORDER BY c.id, i.id",
        task);
    while (rows.step()) {
        const auto id = rows.id<ChecklistId>(0);
        if (checklists.empty() || checklists.back().id != id) checklists.push_back({id, task, rows.text(1), {}});
        if (!rows.isNull(2)) checklists.back().items.push_back({rows.id<ItemId>(2), rows.text(3), rows.flag(4)});
    }
    return checklists;
}

std::optional<TaskId> ChecklistStore::taskOf(ChecklistId id) {
    auto row = database_.query("SELECT task_id FROM checklists WHERE id = ?", id);
    if (!row.step()) return {};
    return row.id<TaskId>(0);
}

std::optional<TaskId> ChecklistStore::taskOf(ItemId id) {
    auto row = database_.query(
        "SELECT c.task_id FROM checklist_items i JOIN checklists c ON c.id = i.checklist_id WHERE i.id = ?", id);
    if (!row.step()) return {};
    return row.id<TaskId>(0);
}

ChecklistStore::Progress ChecklistStore::progress(TaskId task) {
    auto row = database_.query(
        "SELECT ifnull(sum(i.done), 0), count(*) FROM checklists c JOIN checklist_items i ON i.checklist_id = c.id "
        "WHERE c.task_id = ?",
        task);
    if (!row.step()) return {};
    return {row.integer(0), row.integer(1)};
}

ChecklistId ChecklistStore::add(TaskId task, const std::string& title) {
    database_.run("INSERT INTO checklists(task_id, title) VALUES (?, ?)", task, title);
    return ChecklistId{database_.lastInsertedRow()};
}

void ChecklistStore::remove(ChecklistId id) {
    database_.run("DELETE FROM checklists WHERE id = ?", id);
}

ItemId ChecklistStore::addItem(ChecklistId checklist, const std::string& text) {
    database_.run("INSERT INTO checklist_items(checklist_id, text) VALUES (?, ?)", checklist, text);
    return ItemId{database_.lastInsertedRow()};
}

void ChecklistStore::setItemText(ItemId id, const std::string& text) {
    database_.run("UPDATE checklist_items SET text = ? WHERE id = ?", text, id);
}

void ChecklistStore::setItemDone(ItemId id, bool done) {
    database_.run("UPDATE checklist_items SET done = ? WHERE id = ?", done, id);
}

void ChecklistStore::removeItem(ItemId id) {
    database_.run("DELETE FROM checklist_items WHERE id = ?", id);
}

}  // namespace parvela::service
