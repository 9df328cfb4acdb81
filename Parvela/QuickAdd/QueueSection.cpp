#include "QuickAdd/QueueSection.h"

#include "QuickAdd/QueueText.h"

#include <ParvelaKit/ShownTitle.h>

#include <chrono>
#include <utility>

#include <fmt/format.h>

namespace parvela {

namespace {

/// Lines shown one by one; those that failed come first.
constexpr std::size_t shownLines = 20;
/// A long queue that is sent changes many times a second.
constexpr std::chrono::milliseconds updatePause{100};
constexpr std::chrono::seconds countdownPace{1};
constexpr std::chrono::seconds undoPatience{8};
constexpr std::chrono::seconds notePatience{3};

GtkWidget* smallLabel(const std::string& text, const char* style) {
    GtkWidget* const label = gtk_label_new(text.c_str());
    gtk_label_set_xalign(GTK_LABEL(label), 0);
    gtk_label_set_ellipsize(GTK_LABEL(label), PANGO_ELLIPSIZE_END);
    if (style) gtk_widget_add_css_class(label, style);
    return label;
}

std::string stateText(const QueuedLine& line, bool isDiscarded) {
    if (isDiscarded) return "Discarded";
    if (line.state == QueuedLine::State::sending) return "Sending…";
    const std::string reason = line.lastFailure ? shownTitle(*line.lastFailure) : std::string("Waiting");
    return line.boardName.empty() ? reason : fmt::format("{} · {}", reason, shownTitle(line.boardName, 60));
}

}  // namespace

QueueSection::QueueSection(const Interface& interface, std::shared_ptr<WaitingLines> waitingLines, const Clock& clock)
    : interface_(interface), waitingLines_(std::move(waitingLines)), clock_(clock) {
    tryNow_ = connect<void(GtkButton*)>(interface_.get<GtkButton>("queueTryNow"), "clicked",
                                        [this](GtkButton*) { queue().retryNow(); });
    status_ = queue().status().observe([this](const auto&) { updateSoon(); });
}

QueueSection::~QueueSection() {
    discardNow();
}

void QueueSection::setShown(Shown shown) {
    shown_ = shown;
    if (shown == Shown::no) {
        soon_.reset();
        countdown_.reset();
        discardNow();
    } else {
        update();
    }
}

void QueueSection::updateSoon() {
    if (shown_ == Shown::no || soon_.isActive()) return;
    soon_ = MainLoopTimer(updatePause, [this] { update(); });
}

void QueueSection::update() {
    const OfflineQueueStatus& status = queue().status().get();
    const std::string text = queueText(status, clock_.now());
    gtk_widget_set_visible(interface_.get<GtkWidget>("queue"), !text.empty());
    gtk_label_set_text(interface_.get<GtkLabel>("queueState"), text.c_str());
    gtk_widget_set_visible(interface_.get<GtkWidget>("queueTryNow"), status.waiting > 0 && status.sending == 0);

    auto lines = text.empty() ? std::vector<QueuedLine>{} : queue().lines(shownLines);
    if (lines != lines_ || discarded_ != discardedShown_) {
        GtkWidget* const box = interface_.get<GtkWidget>("queueLines");
        auto* const window = interface_.get<GtkWindow>("window");
        GtkWidget* const focus = gtk_window_get_focus(window);
        const bool hadFocus = focus && gtk_widget_is_ancestor(focus, box);
        if (hadFocus) gtk_window_set_focus(window, nullptr);
        clearRows();
        for (const QueuedLine& line : lines) addRow(line);
        const std::size_t all = status.waiting + status.sending + status.failed;
        if (all > lines.size() && !lines.empty()) {
            gtk_box_append(interface_.get<GtkBox>("queueLines"),
                           smallLabel(fmt::format("and {} more", all - lines.size()), "dim-label"));
        }
        lines_ = std::move(lines);
        discardedShown_ = discarded_;
        // The keyboard stays near where it was.
        if (hadFocus && !gtk_widget_child_focus(box, GTK_DIR_TAB_FORWARD)) {
            gtk_widget_grab_focus(interface_.get<GtkWidget>("field"));
        }
    }
    countdown_ = status.nextTry ? MainLoopTimer(countdownPace, [this] { update(); }) : MainLoopTimer();
}

void QueueSection::clearRows() {
    buttons_.clear();
    GtkWidget* const box = interface_.get<GtkWidget>("queueLines");
    while (GtkWidget* const row = gtk_widget_get_first_child(box)) gtk_box_remove(GTK_BOX(box), row);
}

void QueueSection::addRow(const QueuedLine& line) {
    const bool isDiscarded = discarded_.contains(line.id);
    const bool hasFailed = line.state == QueuedLine::State::failed;
    GtkWidget* const texts = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    gtk_widget_set_hexpand(texts, TRUE);
    GtkWidget* const title = smallLabel(shownTitle(line.line), nullptr);
    gtk_widget_set_tooltip_text(title, shortened(line.line, 1000).c_str());
    gtk_box_append(GTK_BOX(texts), title);
    GtkWidget* const state = smallLabel(stateText(line, isDiscarded), "caption");
    gtk_widget_add_css_class(state, hasFailed && !isDiscarded ? "error" : "dim-label");
    gtk_widget_set_tooltip_text(state, line.lastFailure ? shortened(*line.lastFailure, 1000).c_str() : nullptr);
    gtk_box_append(GTK_BOX(texts), state);

    GtkWidget* const row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 4);
    gtk_box_append(GTK_BOX(row), texts);
    if (isDiscarded) {
        addButton(row, "Undo", line.line, [this, id = line.id] {
            discarded_.erase(id);
            update();
        });
    } else {
        if (hasFailed) addButton(row, "Retry", line.line, [this, id = line.id] { (void)queue().retry(id); });
        if (hasFailed) addButton(row, "Discard", line.line, [this, id = line.id] { discard(id); });
        if (line.state == QueuedLine::State::waiting) addButton(row, "Edit", line.line, [this, line] { edit(line); });
    }
    gtk_box_append(interface_.get<GtkBox>("queueLines"), row);
}

void QueueSection::addButton(GtkWidget* row, const char* text, const std::string& line, std::function<void()> action) {
    GtkWidget* const button = gtk_button_new_with_label(text);
    gtk_widget_add_css_class(button, "flat");
    gtk_widget_add_css_class(button, "small");
    gtk_widget_set_valign(button, GTK_ALIGN_CENTER);
    const std::string name = fmt::format("{}: {}", text, shortened(line, 100));
    gtk_accessible_update_property(GTK_ACCESSIBLE(button), GTK_ACCESSIBLE_PROPERTY_LABEL, name.c_str(), -1);
    // The row may be gone once the action is done; it runs when the click is over.
    buttons_.push_back(
        connect<void(GtkButton*)>(button, "clicked", [action = std::move(action)](GtkButton*) { runSoon(action); }));
    gtk_box_append(GTK_BOX(row), button);
}

void QueueSection::edit(const QueuedLine& line) {
    if (takeIntoField(line.line, [this, &line] { return queue().discard(line.id); })) return;
    gtk_label_set_text(interface_.get<GtkLabel>("queueState"), "Add or clear the typed line first.");
    countdown_ = MainLoopTimer(notePatience, [this] { update(); });
}

void QueueSection::discard(std::int64_t line) {
    discarded_.insert(line);
    discard_ = MainLoopTimer(undoPatience, [this] { discardNow(); });
    update();
}

void QueueSection::discardNow() {
    discard_.reset();
    for (const std::int64_t line : std::exchange(discarded_, {})) (void)queue().discard(line);
}

}  // namespace parvela
