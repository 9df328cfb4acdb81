#include <ParvelaKit/QuickAddService.h>

namespace parvela {
namespace {

constexpr const char* emptyTitleText = "Give the task a title.";
constexpr const char* repeatNote = "Repeat rules can't be set from quick add — set the repeat in Parvela.";
constexpr const char* leftInTitleNote = " Left it in the title.";
constexpr const char* notKeptNote = " The line could not be saved for later.";

std::optional<std::vector<std::string>> unlessEmpty(std::vector<std::string> ids) {
    if (ids.empty()) return std::nullopt;
    return ids;
}

NewTask newTask(QuickAddResult parsed, const QuickAddSubmission& submission) {
    if (submission.dueDate) parsed.dueDate = submission.dueDate;
    return {.board = submission.board,
            .title = std::move(parsed.title),
            .description = submission.description,
            .assignees = unlessEmpty(std::move(parsed.assigneeIds)),
            .dueDate = std::move(parsed.dueDate),
            .dueTime = std::move(parsed.dueTime),
            .priority = std::string(QuickAdd::apiString(submission.priority.value_or(parsed.priority))),
            .labels = unlessEmpty(std::move(parsed.labelIds))};
}

}  // namespace

std::string QuickAddFailure::message() const {
    if (!failure_) return emptyTitleText;
    if (!failure_->error()) return {};
    return failure_->error()->message() + (isNotKept_ ? notKeptNote : "");
}

Result<QuickAddDraft, QuickAddFailure> QuickAddService::parse(const QuickAddSubmission& submission) {
    const QuickAddContext seen{submission.today, submission.members, submission.labels};
    QuickAddResult parsed = QuickAdd::parse(submission.line, seen, submission.literalRanges);
    if (parsed.title.empty()) return Failure(QuickAddFailure::emptyTitle());

    const QuickAddContext nobody{submission.today, std::vector<QuickAddMember>(), std::vector<QuickAddLabel>()};
    QuickAddResult withoutNames = QuickAdd::parse(submission.line, nobody, submission.literalRanges);

    const bool namesRepeat = parsed.repeat.has_value();
    return QuickAddDraft{.task = newTask(std::move(parsed), submission),
                         .taskWithoutNames = newTask(std::move(withoutNames), submission),
                         .namesRepeat = namesRepeat};
}

Task<Result<QuickAddService::Outcome, APIFailure>> QuickAddService::send(QuickAddDraft draft, ParvelaAPI api,
                                                                         std::stop_token stop) {
    std::optional<std::string> note;
    if (draft.namesRepeat) note = repeatNote;

    auto firstCall = api.send<TaskSummary>(Endpoint::createTask(draft.task), stop);
    auto created = co_await firstCall;
    if (!created && created.error().error() && created.error().error()->isUnresolvedReference()) {
        note = created.error().error()->message() + leftInTitleNote;
        auto secondCall = api.send<TaskSummary>(Endpoint::createTask(draft.taskWithoutNames), stop);
        created = co_await secondCall;
    }
    if (!created) co_return Failure(std::move(created.error()));
    co_return Outcome{*std::move(created), std::move(note)};
}

Task<Result<QuickAddService::Outcome, QuickAddFailure>> QuickAddService::create(QuickAddSubmission submission,
                                                                                ParvelaAPI api, std::stop_token stop) {
    auto draft = parse(submission);
    if (!draft) co_return Failure(std::move(draft.error()));
    auto call = send(*std::move(draft), std::move(api), std::move(stop));
    auto outcome = co_await call;
    if (!outcome) co_return Failure<QuickAddFailure>(std::move(outcome.error()));
    co_return *std::move(outcome);
}

}  // namespace parvela
