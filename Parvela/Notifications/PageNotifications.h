#pragma once

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Url.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <webkit/webkit.h>

namespace parvela {

class DesktopNotifier;
class MainWindowController;
class WindowManager;

/// Shows the notifications of pages on the desktop. A click leads back to the page's tab and is told to the page; what
/// one side closes is closed on the other.
class PageNotifications {
public:
    PageNotifications(DesktopNotifier& notifier, WindowManager& windows) : notifier_(notifier), windows_(windows) {}
    PageNotifications(const PageNotifications&) = delete;
    PageNotifications& operator=(const PageNotifications&) = delete;
    ~PageNotifications();

    void show(MainWindowController& tab, WebKitNotification* notification);

private:
    struct Item {
        Ref<WebKitNotification> notification;
        std::weak_ptr<MainWindowController> tab;
        std::optional<Url> page;  ///< for when the tab has gone
        Connection closed;
        std::uint64_t number = 0;
    };

    bool isFlood();
    void clicked(const std::string& identifier, const std::optional<std::string>& token);
    /// The user or the desktop has closed it.
    void closedOnDesktop(const std::string& identifier);
    void closedByPage(const std::string& identifier);

    DesktopNotifier& notifier_;
    WindowManager& windows_;
    std::map<std::string, Item> shown_;
    std::uint64_t count_ = 0;
    std::vector<gint64> lately_;  // when the last ones came, monotonic time
};

}  // namespace parvela
