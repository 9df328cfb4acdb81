#include "Menu/DockMenu.h"

#include "Support/ColourDot.h"

#include <ParvelaKit/Text.h>

#include <chrono>
#include <cstddef>
#include <string>
#include <utility>

namespace parvela {

namespace {

constexpr std::size_t longestLabel = 60;  // user-perceived characters
constexpr std::chrono::seconds dueListLifetime{30};
/// Lists change in several steps.
constexpr std::chrono::milliseconds rebuildDelay{100};

/// One line that fits a menu.
std::string labelOf(const std::string& text) {
    std::string line;
    for (const char c : text) line += static_cast<unsigned char>(c) < ' ' ? ' ' : c;
    const std::string_view start = firstCharacters(line, longestLabel);
    return std::string(start) + (start.size() < line.size() ? "…" : "");
}

std::string detailsOf(const TaskSummary& task) {
    std::string details = task.key;
    const auto add = [&details](const std::string& part) {
        if (!part.empty()) details += ", " + part;
    };
    add(task.board);
    add(task.dueDate.value_or(""));
    add(task.dueTime.value_or(""));
    if (task.done) add("done");
    return details;
}

std::vector<DesktopMenuEntry> dueEntries(const AppModel& model, const DockMenuActions& actions) {
    const auto& due = model.dueToday.get();
    if (due.empty()) return {{.label = model.isLoadingDue.get() ? "Loading…" : "Nothing due today"}};
    std::vector<DesktopMenuEntry> entries;
    for (const TaskSummary& task : due) {
        entries.push_back({.label = (task.done ? "✓ " : "") + labelOf(task.title),
                           .action = [task, open = actions.openDueTask] { open(task); },
                           .description = detailsOf(task)});
    }
    return entries;
}

std::vector<DesktopMenuEntry> boardEntries(const AppModel& model, const DockMenuActions& actions) {
    std::vector<DesktopMenuEntry> entries;
    for (const Board& board : model.boards.get()) {
        entries.push_back({.label = labelOf(board.name),
                           .action = [board, open = actions.openBoard] { open(board); },
                           .icon = colourDot(board.colorHex.value_or(""))});
    }
    return entries;
}

}  // namespace

std::vector<DesktopMenuEntry> dockMenuEntries(const AppModel& model, const DockMenuActions& actions) {
    const DesktopMenuEntry separator{.kind = DesktopMenuEntry::Kind::separator};
    std::vector<DesktopMenuEntry> entries{{.label = "New Task", .action = actions.newTask},
                                          {.label = "New Window", .action = actions.newWindow},
                                          separator,
                                          {.label = "Due Today"}};
    for (DesktopMenuEntry& entry : dueEntries(model, actions)) entries.push_back(std::move(entry));
    entries.push_back(separator);
    entries.push_back({.label = "Boards", .children = boardEntries(model, actions)});
    return entries;
}

DockMenu::DockMenu(std::shared_ptr<AppModel> model, DockMenuActions actions)
    : model_(std::move(model)), actions_(std::move(actions)), menu_(objectPath) {
    menu_.onAboutToShow = [this] { refreshWhenOld(); };
    subscriptions_.push_back(model_->dueToday.observe([this](const auto&) { rebuildSoon(); }));
    subscriptions_.push_back(model_->isLoadingDue.observe([this](bool) {
        // A list that is there stays while it is asked for again.
        if (model_->dueToday.get().empty()) rebuildSoon();
    }));
    subscriptions_.push_back(model_->boards.observe([this](const auto&) { rebuildSoon(); }));
    menu_.set(dockMenuEntries(*model_, actions_));
}

void DockMenu::rebuildSoon() {
    if (rebuild_.isActive()) return;
    rebuild_ = MainLoopTimer(rebuildDelay, [this] { menu_.set(dockMenuEntries(*model_, actions_)); });
}

void DockMenu::refreshWhenOld() {
    if (!model_->hasToken.get() || model_->isLoadingDue.get()) return;
    const auto loaded = model_->dueLoadedAt.get();
    if (loaded && model_->session.clock().now() - *loaded < dueListLifetime) return;
    model_->refreshDue().detach();
}

}  // namespace parvela
