#pragma once

#include "Store/Database.h"
#include "Store/Rows.h"

#include <optional>
#include <string>
#include <vector>

namespace parvela::service {

/// What people say about a task, oldest first.
class CommentStore {
public:
    CommentStore(Database& database, const Clock& clock) : database_(database), clock_(clock) {}

    std::vector<CommentRow> ofTask(TaskId task);
    std::optional<CommentRow> find(CommentId id);
    std::int64_t count(TaskId task);
    CommentId add(TaskId task, PersonId author, const std::string& body);
    void edit(CommentId id, const std::string& body);
    void remove(CommentId id);

private:
    Database& database_;
    const Clock& clock_;
};

}  // namespace parvela::service
