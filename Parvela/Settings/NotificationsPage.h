#pragma once

#include "Settings/SettingsEnvironment.h"
#include "Settings/TimeOfDay.h"
#include "Support/Interface.h"

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Observable.h>
#include <Platform/MainLoop.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <adwaita.h>

namespace parvela {

/// Whether notifications are shown, and when the daily summary comes.
class NotificationsPage : public std::enable_shared_from_this<NotificationsPage> {
public:
    static std::shared_ptr<NotificationsPage> create(std::shared_ptr<const SettingsEnvironment> environment);
    NotificationsPage(const NotificationsPage&) = delete;
    NotificationsPage& operator=(const NotificationsPage&) = delete;

    AdwPreferencesPage* widget() const noexcept { return page_; }
    /// The window has come to the front.
    void refresh();

    std::function<void(const std::string&)> showToast;

private:
    explicit NotificationsPage(std::shared_ptr<const SettingsEnvironment> environment);
    void connectTime();
    void showAccess(NotificationAccess access);
    void changeSummary();
    void changeTime();
    void send();
    static Task<void> report(std::weak_ptr<NotificationsPage> self, Task<std::string> outcome);

    std::shared_ptr<const SettingsEnvironment> environment_;
    Interface interface_{"SettingsNotifications.ui"};
    AdwPreferencesPage* page_;
    GtkSwitch* enabled_;
    GtkSwitch* summary_;
    GtkSpinButton* time_;
    HourCycle hours_ = localeHourCycle();
    bool filling_ = false;
    /// A time is stored at once; the summary is planned anew when the keys have come to rest.
    MainLoopTimer settling_;
    std::vector<Connection> connections_;
    Subscription accessChanged_;
};

}  // namespace parvela
