#pragma once

#include <ParvelaKit/Observable.h>
#include <ParvelaKit/Url.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <variant>
#include <vector>

namespace parvela {

/// What a click on a notification, or another native surface, asks the application to open.
struct DeepLinkTarget {
    struct Link {
        Url url;  ///< handled like a URL that reaches the application from outside
        bool operator==(const Link&) const = default;
    };
    struct File {
        Url url;  ///< a local file, revealed in the file browser
        bool operator==(const File&) const = default;
    };

    std::variant<Link, File> target;

    bool operator==(const DeepLinkTarget&) const = default;
};

/// One kind of announcement. Whoever is subscribed hears it; nothing is kept for later.
template <class... Arguments>
class Announcement {
public:
    [[nodiscard]] Subscription observe(std::function<void(Arguments...)> observer) {
        auto entry = std::make_shared<std::function<void(Arguments...)>>(std::move(observer));
        observers_.push_back(entry);
        return Subscription(std::move(entry));
    }

    /// Observers may subscribe and unsubscribe while they are called.
    void post(Arguments... arguments) {
        std::erase_if(observers_, [](const auto& observer) { return observer.expired(); });
        const auto current = observers_;
        for (const auto& observer : current) {
            if (auto call = observer.lock()) (*call)(arguments...);
        }
    }

private:
    std::vector<std::weak_ptr<std::function<void(Arguments...)>>> observers_;
};

/// The announcements by which parts of the application reach each other without knowing each other. Single-threaded.
struct NotificationCentre {
    /// Open a target: the delegate does.
    Announcement<DeepLinkTarget> openURL;
    /// Show the quick-add popover.
    Announcement<> showQuickAdd;
    /// Ask the page to stop its timer.
    Announcement<> stopTimer;
    /// The device was linked or unlinked.
    Announcement<> linkChanged;
    /// Tasks were added or changed by something else than a page.
    Announcement<> tasksChanged;
};

}  // namespace parvela
