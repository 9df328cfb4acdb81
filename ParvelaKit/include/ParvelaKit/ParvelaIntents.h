#pragma once

#include <ParvelaKit/APIError.h>
#include <ParvelaKit/CivilDate.h>
#include <ParvelaKit/OfflineQueue.h>
#include <ParvelaKit/ParvelaSession.h>
#include <ParvelaKit/Records/Tasks.h>
#include <ParvelaKit/Result.h>
#include <ParvelaKit/Task.h>
#include <ParvelaKit/Url.h>

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace parvela {

enum class TaskPriorityOption { low, medium, high, urgent };

struct TaskPriorityOptions {
    static constexpr std::array all = {TaskPriorityOption::low, TaskPriorityOption::medium, TaskPriorityOption::high,
                                       TaskPriorityOption::urgent};
    /// "low" … "urgent", which is also what the service is told.
    static std::string_view rawValue(TaskPriorityOption option);
    /// "Low" … "Urgent".
    static std::string_view displayName(TaskPriorityOption option);
    static std::optional<TaskPriorityOption> fromRawValue(std::string_view text);
};

/// A board as automation names it.
struct BoardEntity {
    std::string id;
    std::string name;

    bool operator==(const BoardEntity&) const = default;
};

struct AddTaskIntent {
    std::string title;  ///< read like a quick-add line
    std::optional<BoardEntity> board;
    std::optional<CivilDate> dueDate;
    std::optional<TaskPriorityOption> priority;
};
/// The same as a script says it: words that are yet to be understood.
struct AddTaskWords {
    std::string line;
    std::optional<std::string> board;  ///< id, or name without regard to case
    std::optional<std::string> due;    ///< "YYYY-MM-DD", or date words of quick add
    std::optional<std::string> priority;
};
struct ShowTasksDueTodayIntent {};
struct OpenTaskIntent {
    std::string key;
};
struct CompleteTaskIntent {
    std::string key;
};

/// One parameter of an action, as automation tools show it.
struct IntentParameter {
    std::string_view name;
    std::string_view title;
    std::string_view prompt;       ///< asks for the value; empty for optional parameters
    std::string_view description;  ///< may be empty
    bool isOptional = false;
};

/// One action, as automation tools list it.
struct IntentDescription {
    std::string_view name;
    std::string_view title;
    std::span<const IntentParameter> parameters;
    /// A sentence with "{name}" in place of each parameter; empty for an action without any.
    std::string_view summary;
    /// What people say or type for it, with "{app}" in place of the application's name.
    std::span<const std::string_view> phrases;
    std::string_view shortTitle;
    std::string_view systemImage;

    std::vector<std::string> phrasesFor(std::string_view applicationName) const;
};

/// Why an action did not do what it was asked to.
struct IntentError {
    enum class Case {
        call,  ///< the service was asked and failed; `apiError` says how
        noBoard,
        noTitle,
        noKey,
        unknownBoard,
        ambiguousBoard,
        badDate,
        badPriority,
        tooLong,
    };

    Case kind = Case::call;
    std::string message;  ///< user-facing; empty when the call was cancelled
    std::optional<APIError> apiError = std::nullopt;

    /// One word for programs, such as "NotFound" or "NoBoard". Fixed: scripts compare it.
    std::string_view name() const;
    /// What was asked for makes no sense, whatever the service says.
    bool isMisuse() const;

    bool operator==(const IntentError&) const = default;
};

/// What an action has to say, and the tasks it was about.
struct IntentResult {
    std::string dialog;
    std::vector<TaskSummary> tasks = {};
    std::optional<std::string> note = std::nullopt;  ///< to show beside the dialog

    bool operator==(const IntentResult&) const = default;
};

/// The actions that automation can ask the application for, whatever door they come through. Each works only with a
/// link or token and fails with the missing-token text otherwise.
class ParvelaIntents {
public:
    using Outcome = Task<Result<IntentResult, IntentError>>;

    /// Longer lines, names and keys are refused.
    static constexpr std::size_t longestText = std::size_t{64} * 1024;

    /// `openURL` shows a page of the web app. The queue must outlive the running actions.
    ParvelaIntents(ParvelaSession session, OfflineQueue& queue, std::function<void(Url)> openURL)
        : session_(std::move(session)), queue_(&queue), openURL_(std::move(openURL)) {}

    /// Add, show, open, complete, in this order.
    static std::span<const IntentDescription> descriptions();

    /// Finds out what the words mean. The service is asked for its boards unless none is named, or the default board by
    /// its id; when it can't answer, the default board's name will do. Nothing is created.
    Task<Result<AddTaskIntent, IntentError>> understand(AddTaskWords words) const;

    Outcome perform(AddTaskIntent intent) const;
    Outcome perform(ShowTasksDueTodayIntent intent) const;
    Outcome perform(OpenTaskIntent intent) const;
    Outcome perform(CompleteTaskIntent intent) const;

    /// The boards of the workspace in the service's order; none when not linked.
    Task<Result<std::vector<BoardEntity>, IntentError>> suggestedBoards() const;
    /// Those of them that have one of the ids.
    Task<Result<std::vector<BoardEntity>, IntentError>> boards(std::vector<std::string> ids) const;

private:
    ParvelaSession session_;
    OfflineQueue* queue_;
    std::function<void(Url)> openURL_;
};

}  // namespace parvela
