#include "QuickAdd/QuickAddPopover.h"

#include <ParvelaKit/ShownTitle.h>

#include <utility>

#include <fmt/format.h>

namespace parvela {

namespace {

/// A long list that arrives must not hold up the window that has just been called.
constexpr std::chrono::milliseconds refreshDelay{50};

}  // namespace

QuickAddPopover::QuickAddPopover(GtkApplication* application, std::shared_ptr<AppModel> model,
                                 QuickAddPopoverActions actions)
    : model_(std::move(model)),
      actions_(std::move(actions)),
      interface_("QuickAddPopover.ui"),
      window_(interface_.get<GtkWindow>("window")),
      form_(QuickAddForm::create(interface_, model_, actions_.waitingLines)),
      due_(interface_, model_),
      queue_(interface_, actions_.waitingLines, model_->session.clock()),
      content_(interface_.get<GtkWidget>("content")),
      linkPrompt_(interface_.get<GtkWidget>("linkPrompt")) {
    gtk_window_set_application(window_.get(), application);
    window_.onClosed = [this] { closed(); };
    window_.onDismissed = [this] {
        if (onDismissed) onDismissed();
    };
    window_.onEscape = [this] { hide(); };
    form_->openTask = [this](const TaskSummary& task) {
        leave();
        actions_.openTask(task);
    };
    form_->onAddedAndDone = [this] { hide(); };
    due_.openTask = form_->openTask;
    queue_.takeIntoField = [this](const std::string& line, const std::function<bool()>& remove) {
        return form_->takeBack(line, remove);
    };
    connectButtons();
    observeModel();
    window_.prepare();
}

QuickAddPopover::~QuickAddPopover() {
    form_->saveDraft();
    window_.onClosed = nullptr;
    gtk_window_destroy(window_.get());
}

void QuickAddPopover::connectButtons() {
    const auto press = [this](const char* id, std::function<void()> action) {
        connections_.push_back(connect<void(GtkButton*)>(interface_.get<GtkButton>(id), "clicked",
                                                         [action = std::move(action)](GtkButton*) { action(); }));
    };
    const auto leaveFor = [this](std::function<void()> QuickAddPopoverActions::* action) {
        return [this, action] {
            leave();
            (actions_.*action)();
        };
    };
    press("openMain", leaveFor(&QuickAddPopoverActions::openMainWindow));
    press("settings", leaveFor(&QuickAddPopoverActions::showSettings));
    press("link", leaveFor(&QuickAddPopoverActions::requestLink));
    press("quit", leaveFor(&QuickAddPopoverActions::quit));
    press("timerStop", [this] { actions_.stopTimer(); });
    press("refresh", [this] { model_->refreshDue().detach(); });
    window_.onRefresh = [this] { model_->refreshAll().detach(); };
}

void QuickAddPopover::observeModel() {
    const auto observe = [this](const auto& field, void (QuickAddPopover::*update)()) {
        subscriptions_.push_back(field.observe([this, update](const auto&) { (this->*update)(); }));
    };
    observe(model_->hasToken, &QuickAddPopover::showLink);
    observe(model_->knowsCredentials, &QuickAddPopover::showLink);
    observe(model_->workspaceName, &QuickAddPopover::showSubtitle);
    observe(model_->linkInfo, &QuickAddPopover::showSubtitle);
    observe(model_->isLoadingBoards, &QuickAddPopover::showLoading);
    observe(model_->isLoadingDue, &QuickAddPopover::showLoading);
    observe(model_->timer, &QuickAddPopover::showTimer);
    showLink();
    showLoading();
    showTimer();
}

void QuickAddPopover::show(std::optional<PopoverAnchor> anchor, const std::optional<std::string>& activationToken) {
    form_->willShow();
    due_.willShow();
    queue_.setShown(QueueSection::Shown::yes);
    window_.present(anchor, activationToken);
    focusField();
    refresh_ = MainLoopTimer(refreshDelay, [this] { model_->refreshAll().detach(); });
}

void QuickAddPopover::hide() {
    window_.close(PopoverWindow::Focus::giveBack);
}

void QuickAddPopover::leave() {
    window_.close(PopoverWindow::Focus::leave);
}

bool QuickAddPopover::isShown() const {
    return window_.isShown();
}

/// What is typed while the keyring is still being asked must not get lost.
bool QuickAddPopover::takesLines() const {
    return model_->hasToken.get() || !model_->knowsCredentials.get();
}

void QuickAddPopover::focusField() {
    if (takesLines()) {
        form_->focusField();
    } else {
        gtk_widget_grab_focus(interface_.get<GtkWidget>("link"));
    }
}

void QuickAddPopover::closed() {
    form_->didClose();
    queue_.setShown(QueueSection::Shown::no);
}

void QuickAddPopover::showLink() {
    const bool showsContent = gtk_widget_get_visible(content_);
    gtk_widget_set_visible(content_, takesLines());
    gtk_widget_set_visible(linkPrompt_, !takesLines());
    showSubtitle();
    if (isShown() && showsContent != takesLines()) focusField();
}

void QuickAddPopover::showSubtitle() {
    const auto& link = model_->linkInfo.get();
    std::string text = "Not linked";
    if (takesLines()) {
        text = "Quick add";
        if (const auto& name = model_->workspaceName.get(); name && !name->empty()) {
            text = shownTitle(*name);
        } else if (link && link->workspaceName) {
            text = shownTitle(*link->workspaceName);
        }
    }
    gtk_label_set_text(interface_.get<GtkLabel>("subtitle"), text.c_str());
}

void QuickAddPopover::showLoading() {
    const bool isLoading = model_->isLoadingBoards.get() || model_->isLoadingDue.get();
    auto* const spinner = interface_.get<GtkSpinner>("loading");
    gtk_widget_set_visible(GTK_WIDGET(spinner), isLoading);
    gtk_spinner_set_spinning(spinner, isLoading);
}

void QuickAddPopover::showTimer() {
    const auto& timer = model_->timer.get();
    gtk_widget_set_visible(interface_.get<GtkWidget>("timerBanner"), timer.has_value());
    if (!timer) return;
    const std::string task = fmt::format("{}: {}", shownTitle(timer->taskKey, 40), shownTitle(timer->taskTitle));
    gtk_label_set_text(interface_.get<GtkLabel>("timerTask"), task.c_str());
    gtk_widget_set_tooltip_text(interface_.get<GtkWidget>("timerTask"), shortened(timer->taskTitle, 1000).c_str());
    const std::string stop = fmt::format("Stop the timer on {}", shortened(timer->taskKey, 40));
    gtk_widget_set_tooltip_text(interface_.get<GtkWidget>("timerStop"), stop.c_str());
}

}  // namespace parvela
