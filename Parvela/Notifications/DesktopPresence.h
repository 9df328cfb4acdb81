#pragma once

#include "Menu/DockMenu.h"
#include "Model/AppModel.h"
#include "Model/DailySummaryScheduler.h"
#include "Model/NotificationCentre.h"
#include "Notifications/DesktopNotifier.h"
#include "Notifications/PageNotifications.h"

#include <ParvelaKit/Clock.h>
#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Task.h>
#include <Platform/LauncherBadge.h>
#include <Platform/MainLoop.h>
#include <Platform/SleepMonitor.h>
#include <Platform/TimeZoneMonitor.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gio/gio.h>

namespace parvela {

class URLRouter;
class WindowManager;

/// What the desktop shows of the program outside its windows: notifications, the daily summary, the badge and the menu
/// of its icon in the dock.
class DesktopPresence {
public:
    /// Everything handed in outlives this object, or is shared with it.
    DesktopPresence(GApplication* application, std::shared_ptr<AppModel> model, std::shared_ptr<const Clock> clock,
                    NotificationCentre& announcements, WindowManager& windows, const std::shared_ptr<URLRouter>& router,
                    std::function<void(const std::string&)> showToast);
    DesktopPresence(const DesktopPresence&) = delete;
    DesktopPresence& operator=(const DesktopPresence&) = delete;
    ~DesktopPresence();

    /// Sets the alarm of the daily summary, and makes up for one that was missed.
    void startSummary();

    /// Shows a notification. Where nobody shows any, its title appears in the front window.
    void notify(UserNotification notification) { notifier_->post(std::move(notification)); }
    /// Whether notifications reach the user.
    const Observable<NotificationAccess>& notificationAccess() const { return notifier_->access(); }

    /// The count on the program's icon; none for no count.
    void showBadge(const std::optional<std::string>& label);

    /// The daily summary was switched on or off, or its time has changed.
    void summaryChanged() { summary_->reschedule(); }
    /// Sends a summary now. The result is one English sentence about what became of it.
    Task<std::string> sendSummary();

private:
    void offerDockMenu(GApplication* application, const std::shared_ptr<URLRouter>& router);
    void watchOccasions(NotificationCentre& announcements);

    std::shared_ptr<AppModel> model_;
    WindowManager& windows_;
    std::shared_ptr<DesktopNotifier> notifier_;
    std::shared_ptr<DailySummaryScheduler> summary_;
    PageNotifications pages_;
    LauncherBadge launcher_;
    std::unique_ptr<DockMenu> dockMenu_;
    std::unique_ptr<SleepMonitor> sleep_;
    std::unique_ptr<TimeZoneMonitor> timeZone_;
    Connection network_;
    MainLoopTimer networkSettles_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace parvela
