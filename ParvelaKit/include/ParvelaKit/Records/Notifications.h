#pragma once

#include <ParvelaKit/Json/Fields.h>
#include <ParvelaKit/Records/People.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace parvela {

/// One entry of the inbox.
struct NotificationItem {
    struct TaskRef {
        std::string id;
        std::string key;
        std::string title;
        std::string boardId;
        std::string board;
        bool done = false;

        bool operator==(const TaskRef&) const = default;
        static constexpr auto fields =
            std::tuple{json::field("id", &TaskRef::id),       json::field("key", &TaskRef::key),
                       json::field("title", &TaskRef::title), json::field("boardId", &TaskRef::boardId),
                       json::field("board", &TaskRef::board), json::field("done", &TaskRef::done)};
    };

    std::string id;
    std::string kind;
    std::string text;
    double at = 0;  ///< milliseconds since 1970
    bool read = false;
    std::optional<Person> actor;
    std::optional<TaskRef> task;

    bool operator==(const NotificationItem&) const = default;
    static constexpr auto fields =
        std::tuple{json::field("id", &NotificationItem::id),     json::field("kind", &NotificationItem::kind),
                   json::field("text", &NotificationItem::text), json::field("at", &NotificationItem::at),
                   json::field("read", &NotificationItem::read), json::field("actor", &NotificationItem::actor),
                   json::field("task", &NotificationItem::task)};
};

struct NotificationsResponse {
    std::int64_t unread = 0;
    std::vector<NotificationItem> items;

    bool operator==(const NotificationsResponse&) const = default;
    static constexpr auto fields = std::tuple{json::field("unread", &NotificationsResponse::unread),
                                              json::field("items", &NotificationsResponse::items)};
};

/// How often something changed since a moment.
struct ChangedResponse {
    std::int64_t changed = 0;

    bool operator==(const ChangedResponse&) const = default;
    static constexpr auto fields = std::tuple{json::field("changed", &ChangedResponse::changed)};
};

/// Answer of the calls that return no data.
struct OKResponse {
    std::optional<bool> ok;

    bool operator==(const OKResponse&) const = default;
    static constexpr auto fields = std::tuple{json::field("ok", &OKResponse::ok)};
};

}  // namespace parvela
