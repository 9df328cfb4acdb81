#pragma once

#include "Store/Database.h"
#include "Store/Rows.h"

#include <optional>
#include <string>
#include <vector>

namespace parvela::service {

/// Each person's inbox.
class NotificationStore {
public:
    NotificationStore(Database& database, const Clock& clock) : database_(database), clock_(clock) {}

    struct NewNotification {
        PersonId recipient;
        std::string kind;  ///< "assigned", "comment", "mention" or "done"
        std::string text;
        PersonId actor;
        TaskId task;
    };
    void add(const NewNotification& notification);

    /// Newest first.
    std::vector<NotificationRow> latest(PersonId person, int limit);
    std::int64_t unread(PersonId person);
    /// Ids of other people's notifications are passed over.
    void mark(PersonId person, const std::vector<NotificationId>& ids, bool read);
    void markAll(PersonId person, bool read);

private:
    Database& database_;
    const Clock& clock_;
};

}  // namespace parvela::service
