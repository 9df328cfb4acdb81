#pragma once

#include "Store/Database.h"
#include "Store/Rows.h"

#include <optional>
#include <string>
#include <vector>

namespace parvela::service {

/// The checklists of tasks and their items, in the order in which they were added.
class ChecklistStore {
public:
    explicit ChecklistStore(Database& database) : database_(database) {}

    std::vector<ChecklistRow> ofTask(TaskId task);
    std::optional<TaskId> taskOf(ChecklistId id);
    std::optional<TaskId> taskOf(ItemId id);

    struct Progress {
        std::int64_t done = 0, total = 0;
    };
    Progress progress(TaskId task);

    ChecklistId add(TaskId task, const std::string& title);
    void remove(ChecklistId id);
    ItemId addItem(ChecklistId checklist, const std::string& text);
    void setItemText(ItemId id, const std::string& text);
    void setItemDone(ItemId id, bool done);
    void removeItem(ItemId id);

private:
    Database& database_;
};

}  // namespace parvela::service
