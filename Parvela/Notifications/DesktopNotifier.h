#pragma once

#include "Model/Notifier.h"

#include <Platform/NotificationService.h>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

namespace parvela {

/// Posts through the desktop's notification service, which asks nobody for permission.
///
/// Targets live as long as the program: the service answers the connection that posted, so a click cannot start the
/// program again, and what is still shown when it ends is taken back.
class DesktopNotifier final : public Notifier {
public:
    /// What follows when a notification has no target that can be written down, such as a page's own.
    struct Reactions {
        std::function<void(const std::optional<std::string>& activationToken)> clicked;
        /// It is no longer shown, for whatever reason; also when it never was.
        std::function<void()> closed;
    };

    /// False drops everything unseen. Not set means yes.
    std::function<bool()> isSwitchedOn;

    explicit DesktopNotifier(NotificationService::Program program);

    Task<void> requestAuthorization() override { co_return; }
    void post(UserNotification notification) override;
    void post(UserNotification notification, Reactions reactions);
    /// Takes back a notification that is still shown; its `closed` is not called then.
    void withdraw(const std::string& identifier);

    /// There was nobody to show a notification that was posted without reactions.
    std::function<void(const UserNotification&)> onDropped;

    const Observable<NotificationAccess>& access() const { return service_.access(); }

private:
    struct Entry {
        UserNotification notification;
        Reactions reactions;
        bool hasReactions = false;
        std::uint64_t number = 0;  ///< later ones are greater
    };

    void show(Entry entry);
    void activated(const std::string& identifier, const std::optional<std::string>& token);
    void closed(const std::string& identifier);
    void dropped(const std::string& identifier);

    void withdrawOldest();

    /// Those that may still be shown.
    std::map<std::string, Entry> shown_;
    std::uint64_t posted_ = 0;
    NotificationService service_;
};

}  // namespace parvela
