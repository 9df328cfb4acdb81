#include "Notifications/DesktopNotifier.h"

#include <Platform/MainLoop.h>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace parvela {

namespace {

/// More than anybody looks at.
constexpr std::size_t mostShown = 200;

}  // namespace

DesktopNotifier::DesktopNotifier(NotificationService::Program program) : service_(std::move(program)) {
    service_.onActivated = [this](const std::string& identifier, const std::optional<std::string>& token) {
        activated(identifier, token);
    };
    service_.onClosed = [this](const std::string& identifier) { closed(identifier); };
    service_.onDropped = [this](const DesktopNotification& notification) { dropped(notification.identifier); };
}

void DesktopNotifier::post(UserNotification notification) {
    show(Entry{.notification = std::move(notification)});
}

void DesktopNotifier::post(UserNotification notification, Reactions reactions) {
    show(Entry{.notification = std::move(notification), .reactions = std::move(reactions), .hasReactions = true});
}

void DesktopNotifier::show(Entry entry) {
    if (isSwitchedOn && !isSwitchedOn()) {
        // Not within the call that posts.
        runSoon([closed = entry.reactions.closed] {
            if (closed) closed();
        });
        return;
    }
    const UserNotification& notification = entry.notification;
    const bool opens = notification.target || entry.reactions.clicked;
    service_.post({.identifier = notification.identifier,
                   .title = notification.title,
                   .body = notification.body,
                   .click = opens ? DesktopNotification::Click::opens : DesktopNotification::Click::nothing});
    std::string identifier = notification.identifier;
    entry.number = ++posted_;
    shown_.insert_or_assign(std::move(identifier), std::move(entry));
    if (shown_.size() > mostShown) withdrawOldest();
}

void DesktopNotifier::withdrawOldest() {
    const auto oldest = std::ranges::min_element(shown_, {}, [](const auto& one) { return one.second.number; });
    const std::string identifier = oldest->first;
    service_.withdraw(identifier);
    closed(identifier);
}

void DesktopNotifier::withdraw(const std::string& identifier) {
    shown_.erase(identifier);
    service_.withdraw(identifier);
}

void DesktopNotifier::activated(const std::string& identifier, const std::optional<std::string>& token) {
    const auto found = shown_.find(identifier);
    if (found == shown_.end()) return;
    const Entry entry = found->second;  // reactions may post and withdraw
    if (entry.reactions.clicked) entry.reactions.clicked(token);
    if (entry.notification.target && onOpenLink) onOpenLink(*entry.notification.target, token);
}

void DesktopNotifier::closed(const std::string& identifier) {
    const auto entry = shown_.extract(identifier);
    if (entry && entry.mapped().reactions.closed) entry.mapped().reactions.closed();
}

void DesktopNotifier::dropped(const std::string& identifier) {
    const auto found = shown_.find(identifier);
    if (found == shown_.end()) return;
    const Entry entry = std::move(found->second);
    shown_.erase(found);
    if (entry.hasReactions) {
        if (entry.reactions.closed) entry.reactions.closed();
    } else if (onDropped) {
        onDropped(entry.notification);
    }
}

}  // namespace parvela
