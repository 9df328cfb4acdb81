#include "Tray/StatusItemController.h"

#include "Support/InstalledFiles.h"
#include "Tray/MarkIcon.h"
#include "Tray/TimerTitle.h"

#include <chrono>
#include <filesystem>
#include <system_error>
#include <utility>

namespace parvela {

namespace {

constexpr const char* idleToolTip = "Parvela — quick add";
/// What the first windows need the processor for.
constexpr std::chrono::milliseconds startUp{1500};
/// Panels that take the keyboard with a press close the popover before they report the click that was meant to do so.
constexpr std::int64_t clickDuration = 400'000;  // microseconds

/// Panels do not tell their colour; most follow the desktop's scheme.
MarkTone toneForPanel() {
    return adw_style_manager_get_dark(adw_style_manager_get_default()) ? MarkTone::light : MarkTone::dark;
}

/// Also of an installation that the panel does not know; empty in a build tree, where the pixels do.
std::string installedIcons() {
    const auto folder = (programFolder() / "../share/icons").lexically_normal();
    std::error_code error;
    const auto icon = folder / "hicolor/symbolic/apps" / PARVELA_APP_ID "-symbolic.svg";
    return std::filesystem::exists(icon, error) ? folder.string() : std::string();
}

TrayItem::Identity identity() {
    return {.id = PARVELA_APP_ID,
            .title = "Parvela",
            .iconName = PARVELA_APP_ID "-symbolic",
            .iconFolder = installedIcons(),
            .icons = markIcons(toneForPanel())};
}

}  // namespace

void QuickAddFocus::request() {
    std::int64_t next = 0;
    if (__builtin_add_overflow(generation.get(), 1, &next)) g_error("There were too many requests for the focus.");
    generation.set(next);
}

StatusItemController::StatusItemController(GtkApplication* application, std::shared_ptr<AppModel> model,
                                           std::shared_ptr<const Clock> clock, QuickAddPopoverActions actions)
    : application_(application),
      model_(std::move(model)),
      clock_(std::move(clock)),
      actions_(std::move(actions)),
      item_(identity()),
      popoverPreparation_(startUp, [this] { popover(); }) {
    item_.onActivate = [this](const TrayItem::Activation& activation) { clicked(activation); };
    schemeChanged_ = connect<void(AdwStyleManager*, GParamSpec*)>(
        adw_style_manager_get_default(), "notify::dark",
        [this](AdwStyleManager*, GParamSpec*) { item_.setIcons(markIcons(toneForPanel())); });
    subscriptions_.push_back(focus_.generation.observe([this](std::int64_t) { popover().focusField(); }));
    subscriptions_.push_back(model_->timer.observe([this](const auto&) { timerChanged(); }));
    timerChanged();
}

QuickAddPopover& StatusItemController::popover() {
    if (!popover_) {
        popoverPreparation_.reset();
        popover_ = std::make_unique<QuickAddPopover>(application_, model_, actions_);
        popover_->onDismissed = [this] { dismissedAt_ = g_get_monotonic_time(); };
    }
    return *popover_;
}

void StatusItemController::clicked(const TrayItem::Activation& activation) {
    const bool dismissedByThisClick = dismissedAt_ && g_get_monotonic_time() - *dismissedAt_ < clickDuration;
    if (isPopoverShown()) {
        hide();
    } else if (!dismissedByThisClick) {
        show(PopoverAnchor{activation.x, activation.y}, Focus::field, activation.token);
    }
}

void StatusItemController::showPopover(Focus focus, const std::optional<std::string>& activationToken) {
    show(std::nullopt, focus, activationToken);
}

void StatusItemController::togglePopover(const std::optional<std::string>& activationToken) {
    if (isPopoverShown()) {
        hide();
    } else {
        showPopover(Focus::field, activationToken);
    }
}

void StatusItemController::show(std::optional<PopoverAnchor> anchor, Focus focus,
                                const std::optional<std::string>& activationToken) {
    popover().show(anchor, activationToken);
    if (focus == Focus::field) focus_.request();
}

void StatusItemController::hide() {
    popover_->hide();
}

void StatusItemController::timerChanged() {
    const auto& timer = model_->timer.get();
    item_.setToolTip(timer ? timerToolTip(*timer) : idleToolTip);
    updateMenu();
    tick();
}

void StatusItemController::tick() {
    const auto& timer = model_->timer.get();
    if (!timer) {
        ticker_.reset();
        item_.setLabel("");
        return;
    }
    const Instant now = clock_->now();
    item_.setLabel(timerTitle(*timer, now));
    ticker_ = MainLoopTimer(untilNextTitle(*timer, now), [this] { tick(); });
}

void StatusItemController::updateMenu() {
    const auto separator = TrayMenuEntry{.kind = TrayMenuEntry::Kind::separator, .label = {}, .action = {}};
    const auto item = [](std::string label, std::function<void()> action) {
        return TrayMenuEntry{.label = std::move(label), .action = std::move(action)};
    };
    std::vector<TrayMenuEntry> menu;
    if (const auto& timer = model_->timer.get()) {
        menu.push_back(item("Stop Timer on " + timer->taskKey, actions_.stopTimer));
        menu.push_back(separator);
    }
    menu.push_back(item("Quick Add…", [this] { showPopover(Focus::field); }));
    menu.push_back(item("Open Parvela", actions_.openMainWindow));
    menu.push_back(separator);
    menu.push_back(item("Settings…", actions_.showSettings));
    menu.push_back(item("Quit Parvela", actions_.quit));
    item_.setMenu(std::move(menu));
}

}  // namespace parvela
