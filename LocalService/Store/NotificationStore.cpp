#include "Store/NotificationStore.h"

namespace parvela::service {

void NotificationStore::add(const NewNotification& notification) {
    database_.run("INSERT INTO notifications(account_id, kind, text, actor_id, task_id, at) VALUES (?, ?, ?, ?, ?, ?)",
                  notification.recipient, notification.kind, notification.text, notification.actor, notification.task,
                  clock_.now());
}

std::vector<NotificationRow> NotificationStore::latest(PersonId person, int limit) {
    std::vector<NotificationRow> notifications;
    auto rows = database_.query(
        "SELECT id, kind, text, actor_id, task_id, at, read_at FROM notifications WHERE account_id = ? "
        "ORDER BY id DESC LIMIT ?",
        person, limit);
    while (rows.step()) {
        notifications.push_back({.id = rows.id<NotificationId>(0),
                                 .kind = rows.text(1),
                                 .text = rows.text(2),
                                 .actor = rows.optionalId<PersonId>(3),
                                 .task = rows.optionalId<TaskId>(4),
                                 .at = rows.instant(5),
                                 .read = !rows.isNull(6)});
    }
    return notifications;
}

std::int64_t NotificationStore::unread(PersonId person) {
    auto row = database_.query("SELECT count(*) FROM notifications WHERE account_id = ? AND read_at IS NULL", person);
    return row.step() ? row.integer(0) : 0;
}

void NotificationStore::mark(PersonId person, const std::vector<NotificationId>& ids, bool read) {
    Transaction transaction(database_);
    const auto moment = read ? std::optional(clock_.now()) : std::nullopt;
    for (const NotificationId id : ids) {
        database_.run("UPDATE notifications SET read_at = ? WHERE id = ? AND account_id = ?", moment, id, person);
    }
    transaction.commit();
}

void NotificationStore::markAll(PersonId person, bool read) {
    if (read) {
        database_.run("UPDATE notifications SET read_at = ? WHERE account_id = ? AND read_at IS NULL", clock_.now(),
                      person);
    } else {
        database_.run("UPDATE notifications SET read_at = NULL WHERE account_id = ?", person);
    }
}

}  // namespace parvela::service
