#include "QuickAdd/QuickAddForm.h"

#include "QuickAdd/QuickAddDrafts.h"

#include <ParvelaKit/ShownTitle.h>

#include <chrono>
#include <string_view>
#include <utility>

#include <fmt/format.h>

namespace parvela {

namespace {

/// Long enough not to write at every key, short enough that a crash costs a word at most.
constexpr std::chrono::milliseconds draftPause{700};

}  // namespace

std::shared_ptr<QuickAddForm> QuickAddForm::create(const Interface& interface, std::shared_ptr<AppModel> model,
                                                   std::shared_ptr<WaitingLines> waitingLines) {
    std::shared_ptr<QuickAddForm> form(new QuickAddForm(interface, std::move(model), std::move(waitingLines)));
    form->observe();
    return form;
}

QuickAddForm::QuickAddForm(const Interface& interface, std::shared_ptr<AppModel> model,
                           std::shared_ptr<WaitingLines> waitingLines)
    : interface_(interface),
      model_(std::move(model)),
      waitingLines_(std::move(waitingLines)),
      lists_(std::make_shared<BoardLists>(model_)),
      session_(model_->session.clock().today()),
      today_(model_->session.clock().today()),
      field_(interface, session_),
      chips_(interface, session_),
      board_(interface, model_) {
}

void QuickAddForm::observe() {
    field_.onChanged = [this] { sessionChanged(); };
    field_.onSubmit = [this](QuickAddField::Submit then) { submit(then); };
    chips_.onChanged = [this] { sessionChanged(); };
    board_.onChanged = [this] { boardChanged(); };
    lists_->onChanged = [weak = weak_from_this()](const std::string& board) {
        const auto self = weak.lock();
        if (self && self->board_.chosen() == board) self->useLists();
    };
    connections_.push_back(connect<void(GtkButton*)>(interface_.get<GtkButton>("add"), "clicked",
                                                     [this](GtkButton*) { submit(QuickAddField::Submit::stay); }));
    connections_.push_back(
        connect<void(GtkButton*)>(interface_.get<GtkButton>("openCreated"), "clicked", [this](GtkButton*) {
            if (const auto task = created_) openTask(*task);
        }));
    // The names belong to the account that is linked.
    const auto forget = [this](const auto&) {
        lists_->forget();
        boardChanged();
    };
    subscriptions_.push_back(model_->tokenHint.observe(forget));
    subscriptions_.push_back(model_->serverRevision.observe(forget));
    subscriptions_.push_back(
        waitingLines_->queue().status().observe([this](const OfflineQueueStatus& status) { queueChanged(status); }));
    session_.restore(QuickAddDrafts::read(model_->session.prefs().store()));
    field_.reset();
    boardChanged();
}

void QuickAddForm::willShow() {
    setToday();
    if (const auto board = board_.chosen()) lists_->refresh(*board).detach();
    field_.selectNothing();
    update();
}

void QuickAddForm::didClose() {
    session_.close();
    forgetOutcome();
    saveDraft();
    update();
}

void QuickAddForm::setToday() {
    const CivilDate today = model_->session.clock().today();
    if (std::exchange(today_, today) != today) session_.setToday(today);
}

void QuickAddForm::saveDraft() {
    draftTimer_.reset();
    QuickAddDrafts::write(model_->session.prefs().store(), session_.draft());
}

void QuickAddForm::sessionChanged() {
    setToday();
    update();
    draftTimer_ = MainLoopTimer(draftPause, [this] { saveDraft(); });
}

bool QuickAddForm::takeBack(const std::string& line, const std::function<bool()>& remove) {
    if (!session_.text().empty() || session_.isCreating()) return false;
    session_.restore({line, {}});
    saveDraft();  // first, so that the line is always kept somewhere
    if (!remove()) {
        session_.restore({});
        saveDraft();
    }
    forgetOutcome();
    update();
    focusField();
    return true;
}

void QuickAddForm::boardChanged() {
    if (const auto board = board_.chosen(); board && model_->hasToken.get()) lists_->refresh(*board).detach();
    useLists();
}

void QuickAddForm::useLists() {
    const auto board = board_.chosen();
    auto lists = board ? lists_->known(*board) : std::nullopt;
    if (lists) {
        session_.setLists(std::move(lists->members), std::move(lists->labels));
    } else {
        session_.setLists(std::nullopt, std::nullopt);
    }
    update();
}

void QuickAddForm::submit(QuickAddField::Submit then) {
    setToday();
    forgetOutcome();
    const auto board = board_.chosen();
    if (auto submission = session_.commit(board)) {
        send(weak_from_this(), model_, waitingLines_, std::move(*submission), board_.name(), then).detach();
    }
    update();
}

Task<void> QuickAddForm::send(std::weak_ptr<QuickAddForm> form, std::shared_ptr<AppModel> model,
                              std::shared_ptr<WaitingLines> waitingLines, QuickAddSubmission submission,
                              std::string boardName, QuickAddField::Submit then) {
    Result<QuickAddReceipt, QuickAddFailure> receipt = Failure(QuickAddFailure(APIError::missingToken()));
    auto connecting = model->session.client();
    const auto api = co_await connecting;
    if (api) {
        auto submitting = waitingLines->queue().submit(std::move(submission), std::move(boardName), *api);
        auto answer = co_await submitting;
        receipt = std::move(answer);
    }
    if (receipt && receipt->task) model->tasksChanged();
    if (const auto self = form.lock()) self->ended(std::move(receipt), then);
}

void QuickAddForm::ended(Result<QuickAddReceipt, QuickAddFailure> receipt, QuickAddField::Submit then) {
    if (receipt) {
        session_.succeeded();
        created_ = std::move(receipt->task);
        note_ = std::move(receipt->note);
        saveDraft();
    } else {
        session_.failed(receipt.error().message());
    }
    update();
    if (receipt && then == QuickAddField::Submit::close && onAddedAndDone) onAddedAndDone();
}

/// What was promised for the line just typed has come true, or stands beside it in the queue.
void QuickAddForm::queueChanged(const OfflineQueueStatus& status) {
    if (created_ || !note_ || status.waiting + status.sending > 0) return;
    note_.reset();
    update();
}

void QuickAddForm::forgetOutcome() {
    created_.reset();
    note_.reset();
}

void QuickAddForm::update() {
    field_.update();
    chips_.update();
    const auto show = [this](const char* id, bool isShown) {
        gtk_widget_set_visible(interface_.get<GtkWidget>(id), isShown);
    };
    const auto showText = [&](const char* box, const char* label, const std::optional<std::string>& text) {
        show(box, text.has_value());
        if (text) gtk_label_set_text(interface_.get<GtkLabel>(label), text->c_str());
    };
    const auto warning = session_.warning();
    showText("warning", "warning", warning ? std::optional(std::string(*warning)) : std::nullopt);
    const auto& error = session_.errorText();
    showText("error", "errorText", error ? std::optional(shownTitle(*error)) : std::nullopt);
    showText("note", "note", note_ ? std::optional(shownTitle(*note_)) : std::nullopt);
    show("created", created_.has_value());
    if (created_) {
        const std::string open = fmt::format("Open {} in Parvela", shortened(created_->key, 40));
        gtk_button_set_label(interface_.get<GtkButton>("openCreated"), open.c_str());
    }
    gtk_stack_set_visible_child_name(interface_.get<GtkStack>("addStack"),
                                     session_.isCreating() ? "spinner" : "button");
    gtk_spinner_set_spinning(interface_.get<GtkSpinner>("creating"), session_.isCreating());
}

}  // namespace parvela
