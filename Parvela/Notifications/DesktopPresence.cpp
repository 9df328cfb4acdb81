#include "Notifications/DesktopPresence.h"

#include "URLRouter.h"
#include "Windows/MainWindowController.h"
#include "Windows/WindowManager.h"

#include <ParvelaKit/BoardView.h>
#include <Platform/WallClockAlarm.h>

#include <charconv>
#include <chrono>
#include <cstdint>
#include <utility>

namespace parvela {

namespace {

/// A network that comes up announces itself several times.
constexpr std::chrono::seconds networkPatience{2};

NotificationService::Program thisProgram() {
    return {.name = "Parvela", .desktopEntry = PARVELA_APP_ID};
}

}  // namespace

DesktopPresence::DesktopPresence(GApplication* application, std::shared_ptr<AppModel> model,
                                 std::shared_ptr<const Clock> clock, NotificationCentre& announcements,
                                 WindowManager& windows, const std::shared_ptr<URLRouter>& router,
                                 std::function<void(const std::string&)> showToast)
    : model_(std::move(model)),
      windows_(windows),
      notifier_(std::make_shared<DesktopNotifier>(thisProgram())),
      summary_(std::make_shared<DailySummaryScheduler>(model_, std::move(clock), notifier_, setWallClockAlarm)),
      pages_(*notifier_, windows),
      launcher_(PARVELA_APP_ID) {
    notifier_->isSwitchedOn = [prefs = model_->session.prefs()] { return prefs.notificationsEnabled(); };
    notifier_->onOpenLink = [this, router](const DeepLinkTarget& target, const std::optional<std::string>& token) {
        windows_.activation().expect(token);
        router->open(target, token);
    };
    notifier_->onDropped = [showToast = std::move(showToast)](const UserNotification& notification) {
        showToast(notification.title);
    };
    windows_.onPageNotification = [this](MainWindowController& tab, WebKitNotification* notification) {
        pages_.show(tab, notification);
    };
    offerDockMenu(application, router);
    watchOccasions(announcements);
}

/// A summary on its way keeps the notifier a little longer.
DesktopPresence::~DesktopPresence() {
    notifier_->onOpenLink = nullptr;
    notifier_->onDropped = nullptr;
    windows_.onPageNotification = nullptr;
}

void DesktopPresence::offerDockMenu(GApplication* application, const std::shared_ptr<URLRouter>& router) {
    if (!g_application_get_dbus_connection(application)) return;
    // Docks tell no activation token.
    const auto afterClick = [this](const auto& action) {
        return [this, action](const auto&... what) {
            windows_.activation().expect(std::nullopt);
            action(what...);
        };
    };
    dockMenu_ = std::make_unique<DockMenu>(
        model_, DockMenuActions{.newTask = afterClick([this] { windows_.newTaskInFront(); }),
                                .newWindow = afterClick([this] { windows_.openWindow(); }),
                                .openDueTask = afterClick(
                                    [router](const TaskSummary& task) { router->loadInFront(router->pageOf(task)); }),
                                .openBoard = afterClick([this](const Board& board) {
                                    windows_.showMainWindow();
                                    auto* const tab = windows_.frontController();
                                    if (tab) {
                                        tab->openPage(BoardView::page(board.id, 0, windows_.server()));
                                    }
                                })});
    launcher_.setMenu(DockMenu::objectPath);
}

/// Whatever may have let a summary's time go by, or kept it from being fetched.
void DesktopPresence::watchOccasions(NotificationCentre& announcements) {
    sleep_ = std::make_unique<SleepMonitor>([this] { summary_->reschedule(); });
    timeZone_ = std::make_unique<TimeZoneMonitor>([this] { summary_->reschedule(); });
    network_ = connect<void(GNetworkMonitor*, gboolean)>(
        g_network_monitor_get_default(), "network-changed", [this](GNetworkMonitor*, gboolean) {
            networkSettles_ = MainLoopTimer(networkPatience, [this] { summary_->reschedule(); });
        });
    subscriptions_.push_back(announcements.linkChanged.observe([this] { summary_->reschedule(); }));
    // The service answers again.
    subscriptions_.push_back(model_->dueLoadedAt.observe([this](const auto&) { summary_->reschedule(); }));
}

void DesktopPresence::startSummary() {
    notifier_->requestAuthorization().detach();
    summary_->reschedule();
}

void DesktopPresence::showBadge(const std::optional<std::string>& label) {
    std::int64_t count = 0;
    if (label) std::from_chars(label->data(), label->data() + label->size(), count);
    launcher_.setCount(count);
}

Task<std::string> DesktopPresence::sendSummary() {
    const auto notifier = notifier_;
    const Preferences prefs = model_->session.prefs();
    auto sending = summary_->send(DailySummaryScheduler::Occasion::requested);
    const auto outcome = co_await sending;
    using Case = DailySummaryScheduler::Outcome::Case;
    if (outcome.kind != Case::sent) co_return outcome.problem;
    if (!prefs.notificationsEnabled()) co_return "Notifications are switched off in Parvela.";
    switch (notifier->access().get()) {
        case NotificationAccess::missing:
            co_return "Nothing on this desktop shows notifications.";
        case NotificationAccess::switchedOff:
            co_return "Notifications of Parvela are switched off in the desktop's settings.";
        case NotificationAccess::unknown:
        case NotificationAccess::available:
            break;
    }
    co_return "The summary was sent.";
}

}  // namespace parvela
