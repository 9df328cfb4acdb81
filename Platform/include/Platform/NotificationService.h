#pragma once

#include <ParvelaKit/Observable.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace parvela {

/// What the desktop shall show to the user. Plain text.
struct DesktopNotification {
    enum class Click { opens, nothing };

    /// A later notification with the same identifier takes this one's place.
    std::string identifier;
    std::string title;
    std::string body;
    Click click = Click::opens;
};

/// Whether notifications reach the user, as far as that is known.
enum class NotificationAccess {
    unknown,      ///< not found out yet
    available,    ///< a service is there, or the bus can start one
    missing,      ///< nobody shows notifications here
    switchedOff,  ///< the user has switched this program's off in the desktop's settings
};

/// Shows notifications through the desktop's notification service (Desktop Notifications Specification 1.2).
///
/// All runs over one connection, because services answer the connection that asked. A service that starts, ends or is
/// replaced meanwhile is noticed; without one, notifications are dropped. Those that are still shown go with the
/// object, because nobody would hear a click on them.
class NotificationService {
public:
    struct Program {
        std::string name;          ///< what people call the program
        std::string desktopEntry;  ///< its desktop file without ".desktop", which is also its icon's name
    };

    explicit NotificationService(Program program);
    NotificationService(const NotificationService&) = delete;
    NotificationService& operator=(const NotificationService&) = delete;
    ~NotificationService();

    /// The user clicked the notification. The token, when there is one, lets a window come to the front.
    std::function<void(const std::string& identifier, const std::optional<std::string>& activationToken)> onActivated;
    /// The notification is no longer shown: it was clicked, dismissed, timed out, or the service has gone.
    std::function<void(const std::string& identifier)> onClosed;
    /// There was nobody to show it.
    std::function<void(const DesktopNotification&)> onDropped;

    const Observable<NotificationAccess>& access() const;

    void post(DesktopNotification notification);
    /// Takes a notification back that is still shown.
    void withdraw(const std::string& identifier);

private:
    class Impl;
    std::shared_ptr<Impl> impl_;
};

}  // namespace parvela
