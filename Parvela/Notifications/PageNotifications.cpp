#include "Notifications/PageNotifications.h"

#include "Notifications/DesktopNotifier.h"
#include "Windows/MainWindow.h"
#include "Windows/MainWindowController.h"
#include "Windows/WindowManager.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace parvela {

namespace {

/// A page that asks for more than this is broken or hostile.
constexpr std::size_t mostShown = 20;
constexpr std::size_t mostLately = 10;
constexpr gint64 latelyMeans = 10 * G_TIME_SPAN_SECOND;

std::string textOf(const char* text) {
    return text ? text : "";
}

}  // namespace

PageNotifications::~PageNotifications() {
    for (auto& [identifier, item] : std::exchange(shown_, {})) notifier_.withdraw(identifier);
}

bool PageNotifications::isFlood() {
    const gint64 now = g_get_monotonic_time();
    std::erase_if(lately_, [now](gint64 when) { return now - when > latelyMeans; });
    if (lately_.size() >= mostLately) return true;
    lately_.push_back(now);
    return false;
}

void PageNotifications::show(MainWindowController& tab, WebKitNotification* notification) {
    if (isFlood()) {
        webkit_notification_close(notification);
        return;
    }
    if (shown_.size() >= mostShown) {
        const auto oldest = std::ranges::min_element(shown_, {}, [](const auto& one) { return one.second.number; });
        const std::string identifier = oldest->first;
        notifier_.withdraw(identifier);
        closedOnDesktop(identifier);
    }
    const CharPtr uuid(g_uuid_string_random());
    const std::string identifier = "page-" + std::string(uuid.get());
    Item item{.notification = Ref<WebKitNotification>::ref(notification),
              .tab = tab.weak_from_this(),
              .page = tab.currentURL(),
              .number = ++count_};
    item.closed = connect<void(WebKitNotification*)>(
        notification, "closed", [this, identifier](WebKitNotification*) { closedByPage(std::string(identifier)); });
    shown_.insert_or_assign(identifier, std::move(item));
    const std::string title = textOf(webkit_notification_get_title(notification));
    notifier_.post({.title = title.empty() ? "Parvela" : title,
                    .body = textOf(webkit_notification_get_body(notification)),
                    .identifier = identifier,
                    .target = std::nullopt},
                   {.clicked = [this, identifier](const auto& token) { clicked(identifier, token); },
                    .closed = [this, identifier] { closedOnDesktop(identifier); }});
}

void PageNotifications::clicked(const std::string& identifier, const std::optional<std::string>& token) {
    const auto found = shown_.find(identifier);
    if (found == shown_.end()) return;
    const auto notification = found->second.notification;
    const auto tab = found->second.tab.lock();
    const auto page = found->second.page;
    windows_.activation().expect(token);
    if (tab && tab->window()) {
        tab->window()->select(*tab);
        tab->window()->present();
    } else {
        windows_.showMainWindow();
        if (auto* const front = windows_.frontController(); front && page) front->load(*page);
    }
    webkit_notification_clicked(notification.get());
}

void PageNotifications::closedOnDesktop(const std::string& identifier) {
    const auto item = shown_.extract(identifier);
    if (!item) return;
    item.mapped().closed = {};
    webkit_notification_close(item.mapped().notification.get());
}

void PageNotifications::closedByPage(const std::string& identifier) {
    const auto item = shown_.extract(identifier);
    if (item) notifier_.withdraw(identifier);
}

}  // namespace parvela
