#pragma once

#include "Domain/Ids.h"

#include <ParvelaKit/Clock.h>

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What the stores hand out: plain values, one per table that clients see.
namespace parvela::service {

struct Workspace {
    WorkspaceId id;
    std::string name;
};

struct Account {
    PersonId id;
    std::string name;
    std::string email;
    std::string color;                    ///< "#RRGGBB"
    std::string role;                     ///< "owner" or "member"
    std::optional<std::string> timeZone;  ///< IANA name; none follows the machine

    bool isOwner() const { return role == "owner"; }
};

struct BoardRow {
    BoardId id;
    std::string name;
    std::string description;
    std::string icon;
    std::optional<std::string> color;  ///< "#RRGGBB"
    std::optional<std::string> section;
    bool isPrivate = false;
    bool starred = false;  ///< by the person who asked
    std::optional<ListId> completionList;
};

struct ListRow {
    ListId id;
    BoardId board;
    std::string name;
    std::int64_t open = 0;
    std::int64_t total = 0;
};

struct LabelRow {
    LabelId id;
    BoardId board;
    std::string name;
    std::string tone;
};

inline constexpr std::array<std::string_view, 9> tones = {"gray", "red",  "orange", "yellow", "green",
                                                          "teal", "blue", "purple", "pink"};
/// By rising importance; the database holds the index.
inline constexpr std::array<std::string_view, 5> priorities = {"none", "low", "medium", "high", "urgent"};

struct TaskRow {
    TaskId id;
    BoardId board;
    ListId list;
    std::string boardName;
    std::string listName;
    std::optional<ListId> listBeforeDone;
    std::optional<TaskId> parent;
    std::string title;
    std::string description;
    int priority = 0;  ///< index into priorities
    std::optional<std::string> startDate, dueDate, dueTime;
    std::int64_t position = 0;
    std::optional<std::int64_t> estimateMinutes;
    std::int64_t trackedMilliseconds = 0;
    Instant createdAt;
    std::optional<PersonId> createdBy;
    std::optional<Instant> completedAt, deletedAt;

    bool done() const { return completedAt.has_value(); }
};

struct ChecklistItem {
    ItemId id;
    std::string text;
    bool done = false;
};

struct ChecklistRow {
    ChecklistId id;
    TaskId task;
    std::string title;
    std::vector<ChecklistItem> items;
};

struct CommentRow {
    CommentId id;
    TaskId task;
    PersonId author;
    std::string body;
    Instant at;
    bool edited = false;
};

struct ActivityEntry {
    std::string who;
    std::string text;
    Instant at;
};

struct FileRow {
    FileId id;
    TaskId task;
    std::string name;
    std::string mime;
    std::int64_t size = 0;
};

struct TimerRow {
    PersonId person;
    TaskId task;
    Instant startedAt;
};

struct NotificationRow {
    NotificationId id;
    std::string kind;
    std::string text;
    std::optional<PersonId> actor;
    std::optional<TaskId> task;
    Instant at;
    bool read = false;
};

struct ApiToken {
    TokenId id;
    PersonId account;
    std::string kind;  ///< "device" or "personal"
    std::string name;
    std::string hint;
    bool canWrite = false;
    Instant createdAt;
    std::optional<Instant> lastUsedAt;
    std::optional<std::string> deviceId;  ///< of a device's token
};

}  // namespace parvela::service
