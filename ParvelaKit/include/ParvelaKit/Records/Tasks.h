#pragma once

#include <ParvelaKit/Json/Fields.h>
#include <ParvelaKit/Records/People.h>

#include <optional>
#include <string>
#include <vector>

namespace parvela {

/// A task as lists show it. Dates are "YYYY-MM-DD", times "HH:MM".
struct TaskSummary {
    std::string id;
    std::string key;  ///< what people call it, such as "TSK-42"
    std::string title;
    std::string board;  ///< name of the board
    std::string boardId;
    std::string list;  ///< name of the list
    std::string listId;
    std::vector<std::string> assignees;
    std::string priority;
    std::vector<std::string> labels;
    std::optional<std::string> dueDate;
    std::optional<std::string> dueTime;
    bool done = false;
    std::optional<std::string> url;  ///< page of the task, possibly relative to the web app
    std::optional<std::string> description;
    std::optional<std::vector<LabelTag>> labelTags;

    bool operator==(const TaskSummary&) const = default;
    static constexpr auto fields = std::tuple{
        json::field("id", &TaskSummary::id),
        json::field("key", &TaskSummary::key),
        json::field("title", &TaskSummary::title),
        json::field("board", &TaskSummary::board),
        json::field("boardId", &TaskSummary::boardId),
        json::field("list", &TaskSummary::list),
        json::field("listId", &TaskSummary::listId),
        json::field("assignees", &TaskSummary::assignees),
        json::field("priority", &TaskSummary::priority),
        json::field("labels", &TaskSummary::labels),
        json::field("dueDate", &TaskSummary::dueDate),
        json::field("dueTime", &TaskSummary::dueTime),
        json::field("done", &TaskSummary::done),
        json::field("url", &TaskSummary::url),
        json::field("description", &TaskSummary::description),
        json::field("labelTags", &TaskSummary::labelTags),
    };
};

struct TasksResponse {
    std::optional<std::string> today;  ///< the service's date for the person
    std::vector<TaskSummary> tasks;

    bool operator==(const TasksResponse&) const = default;
    static constexpr auto fields =
        std::tuple{json::field("today", &TasksResponse::today), json::field("tasks", &TasksResponse::tasks)};
};

struct SearchResponse {
    std::vector<TaskSummary> results;

    bool operator==(const SearchResponse&) const = default;
    static constexpr auto fields = std::tuple{json::field("results", &SearchResponse::results)};
};

/// Answer to an added comment.
struct CommentResponse {
    std::string task;
    std::string commentId;
    bool posted = false;

    bool operator==(const CommentResponse&) const = default;
    static constexpr auto fields =
        std::tuple{json::field("task", &CommentResponse::task), json::field("commentId", &CommentResponse::commentId),
                   json::field("posted", &CommentResponse::posted)};
};

}  // namespace parvela
