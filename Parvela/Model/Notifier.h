#pragma once

#include "Model/NotificationCentre.h"

#include <ParvelaKit/Task.h>

#include <functional>
#include <optional>
#include <string>

namespace parvela {

/// One desktop notification. Title and body are plain text.
struct UserNotification {
    std::string title;
    std::string body;
    /// A later notification with the same identifier replaces this one.
    std::string identifier;
    /// What a click opens.
    std::optional<DeepLinkTarget> target;

    bool operator==(const UserNotification&) const = default;
};

/// Posts notifications and turns a click on one into a request to open its target.
class Notifier {
public:
    virtual ~Notifier() = default;

    /// Called with the target of a clicked notification. The token, when there is one, lets a window or another program
    /// come to the front. Installed by the delegate.
    std::function<void(const DeepLinkTarget&, const std::optional<std::string>& activationToken)> onOpenLink;

    /// Asks the user once, where the desktop wants to be asked. A refusal is no error.
    virtual Task<void> requestAuthorization() = 0;
    /// A desktop that shows no notifications drops it.
    virtual void post(UserNotification notification) = 0;
};

}  // namespace parvela
