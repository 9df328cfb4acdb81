#pragma once

#include <ParvelaKit/APIError.h>
#include <ParvelaKit/CivilDate.h>
#include <ParvelaKit/ParvelaAPI.h>
#include <ParvelaKit/QuickAddParser.h>
#include <ParvelaKit/QuickAddRecords.h>
#include <ParvelaKit/Records/Requests.h>
#include <ParvelaKit/Records/Tasks.h>
#include <ParvelaKit/Result.h>
#include <ParvelaKit/Task.h>

#include <optional>
#include <stop_token>
#include <string>
#include <variant>
#include <vector>

namespace parvela {

/// One typed line on its way to a board, with what its caller knows besides.
struct QuickAddSubmission {
    std::string line;
    std::string board;  ///< id
    CivilDate today;    ///< the local day on which the line was typed
    /// What separate input fields say; each wins over the line. The date is "YYYY-MM-DD".
    std::optional<std::string> dueDate;
    std::optional<QuickAddPriority> priority;
    std::optional<std::string> description;
    /// The lists the line was shown with, so that what is sent is what was seen. Without them names are sent as written
    /// and the service resolves them.
    std::optional<std::vector<QuickAddMember>> members;
    std::optional<std::vector<QuickAddLabel>> labels;
    /// Pieces that the user gave back as plain text.
    std::vector<QuickAddRange> literalRanges;
};

/// A parsed line, ready to be sent.
struct QuickAddDraft {
    NewTask task;
    /// The same with every person and label left in the title, for a service that cannot resolve one of them.
    NewTask taskWithoutNames;
    bool namesRepeat = false;  ///< the line named a repeat rule, which is never sent
};

/// Why a line became no task.
class QuickAddFailure {
public:
    static QuickAddFailure emptyTitle() { return {}; }
    QuickAddFailure(APIFailure failure) : failure_(std::move(failure)) {}  // NOLINT: every APIFailure is one
    /// The line would have waited for the service, but there was no place to keep it.
    static QuickAddFailure notKept(APIFailure failure) {
        QuickAddFailure made(std::move(failure));
        made.isNotKept_ = true;
        return made;
    }

    bool isEmptyTitle() const noexcept { return !failure_.has_value(); }
    /// How the call ended; none when nothing was sent.
    const std::optional<APIFailure>& apiFailure() const noexcept { return failure_; }
    /// The user-facing text; empty when cancelled.
    std::string message() const;

    bool operator==(const QuickAddFailure&) const = default;

private:
    QuickAddFailure() = default;

    std::optional<APIFailure> failure_;
    bool isNotKept_ = false;
};

/// Turns typed lines into tasks.
struct QuickAddService {
    struct Outcome {
        TaskSummary task;
        std::optional<std::string> note;  ///< to show beside the success

        bool operator==(const Outcome&) const = default;
    };

    /// Parses, sends and, when the service cannot resolve a person or label, sends once more with the names in the
    /// title.
    static Task<Result<Outcome, QuickAddFailure>> create(QuickAddSubmission submission, ParvelaAPI api,
                                                         std::stop_token stop = {});

    /// The first half of create(): fails with an empty title only.
    static Result<QuickAddDraft, QuickAddFailure> parse(const QuickAddSubmission& submission);
    /// The second half of create().
    static Task<Result<Outcome, APIFailure>> send(QuickAddDraft draft, ParvelaAPI api, std::stop_token stop = {});
};

}  // namespace parvela
