#include "Web/WebBridge.h"

#include "Windows/MainWindow.h"
#include "Windows/MainWindowController.h"
#include "Windows/WindowManager.h"

#include <ParvelaKit/GLibPtr.h>

#include <string_view>
#include <utility>

namespace parvela {

namespace {

template <class... Handlers>
struct Overloaded : Handlers... {
    using Handlers::operator()...;
};

}  // namespace

bool WebBridge::receive(MainWindowController& sender, WebKitUserMessage* message) {
    if (webkit_user_message_get_name(message) != NativeBridge::handlerName) return false;
    GVariant* const parameters = webkit_user_message_get_parameters(message);
    if (!parameters || !g_variant_is_of_type(parameters, G_VARIANT_TYPE("(ss)"))) return true;
    const char* address = nullptr;
    const char* body = nullptr;
    g_variant_get(parameters, "(&s&s)", &address, &body);

    auto parsed = BridgeMessage::parseText(body, model_->session.clock().now());
    if (!parsed) return true;
    // A page without an address of its own, such as the error page, still moves its window.
    if (std::holds_alternative<BridgeMessage::TitlebarDoubleClick>(parsed->content)) {
        sender.titlebarDoubleClick();
    } else if (std::holds_alternative<BridgeMessage::WindowDrag>(parsed->content)) {
        sender.windowDrag();
    } else if (const auto page = Url::parseFromEngine(address); page && model_->server.get().isAppOrigin(*page)) {
        apply(sender, *page, std::move(*parsed));
    }
    return true;
}

void WebBridge::apply(MainWindowController& sender, const Url& page, BridgeMessage message) {
    std::visit(Overloaded{
                   [&](BridgeMessage::Link& link) { adoptLink(std::move(link), page).detach(); },
                   [&](BridgeMessage::TimerStarted& started) { model_->setTimer(std::move(started.timer)); },
                   [&](const BridgeMessage::TimerStopped& stopped) {
                       const auto& timer = model_->timer.get();
                       if (!stopped.taskKey || (timer && timer->taskKey == *stopped.taskKey))
                           model_->setTimer(std::nullopt);
                   },
                   [&](const BridgeMessage::Badge& badge) {
                       if (badge.count == model_->badgeCount.get()) {
                           model_->updateDockBadge();
                       } else {
                           model_->setBadge(badge.count);
                       }
                   },
                   [&](BridgeMessage::Boards& boards) { sender.setBoards(std::move(boards.boards)); },
                   [&](const BridgeMessage::Shell&) { sender.pageSupportsShell(); },
                   [&](const BridgeMessage::Unlinked&) { model_->unlink().detach(); },
                   [](const BridgeMessage::WindowDrag&) {},
                   [](const BridgeMessage::TitlebarDoubleClick&) {},
               },
               message.content);
}

/// The bridge lives as long as the application, so it may wait here.
Task<void> WebBridge::adoptLink(BridgeMessage::Link link, Url page) {
    auto adopting = model_->adoptLink(std::move(link), std::move(page));
    const auto adopted = co_await adopting;
    if (adopted) co_return;
    if (MainWindow* const window = windows_.frontWindow()) window->showToast(adopted.error().message());
}

}  // namespace parvela
