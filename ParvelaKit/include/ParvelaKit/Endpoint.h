#pragma once

#include <ParvelaKit/Records/Requests.h>
#include <ParvelaKit/Url.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace parvela {

/// What a task list call asks for. With nothing chosen, the service's own default list.
struct TaskListOptions {
    bool mine = false;
    std::optional<DueFilter> due;
    std::optional<std::string> board;  ///< id
    bool includeDone = false;
};

/// One call of the service's HTTP API as plain data. ParvelaAPI turns it into a request.
struct Endpoint {
    std::string method;
    /// Segments below "api/v1", not yet percent-encoded; a "/" inside a segment does not split it.
    std::vector<std::string> path;
    std::vector<QueryItem> query;
    /// Encoded JSON.
    std::optional<std::string> body;

    bool operator==(const Endpoint&) const = default;

    /// Each operation names the record that answers it. A key is a task's key or id.
    static const Endpoint& me();      ///< Me
    static const Endpoint& boards();  ///< BoardsResponse
    static const Endpoint& home();    ///< HomeData
    static const Endpoint& people();  ///< PeopleResponse

    static Endpoint board(std::string_view id);                                          ///< BoardDetail
    static Endpoint boardSummary(std::string_view id);                                   ///< BoardSummary
    static Endpoint tasks(const TaskListOptions& options = {});                          ///< TasksResponse
    static Endpoint search(std::string_view text, std::optional<std::int64_t> limit);    ///< SearchResponse
    static Endpoint task(std::string_view key);                                          ///< TaskSummary
    static Endpoint taskDetail(std::string_view key);                                    ///< TaskDetail
    static Endpoint createTask(const NewTask& task);                                     ///< TaskSummary
    static Endpoint updateTask(std::string_view key, const TaskPatch& patch);            ///< TaskSummary
    static Endpoint updateTask(std::string_view key, const TaskEdit& edit);              ///< TaskSummary
    static Endpoint addComment(std::string_view key, const CommentDraft& comment);       ///< CommentResponse
    static Endpoint tickChecklistItem(std::string_view key, const ChecklistTick& tick);  ///< OKResponse
    static Endpoint notifications(std::optional<std::int64_t> limit = std::nullopt);     ///< NotificationsResponse
    static Endpoint markNotifications(const NotificationMark& mark);                     ///< OKResponse
    static Endpoint registerPush(const PushRegistration& registration);                  ///< OKResponse
    static Endpoint unregisterPush(const PushRemoval& removal);                          ///< OKResponse
    static Endpoint revokeToken();                                                       ///< OKResponse
};

}  // namespace parvela
