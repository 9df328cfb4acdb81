#pragma once

#include "Model/AppModel.h"

#include <ParvelaKit/BridgeMessage.h>
#include <ParvelaKit/Url.h>

#include <memory>

#include <webkit/webkit.h>

namespace parvela {

class MainWindowController;
class WindowManager;

/// Receives what pages post, checks where it comes from, and hands it to the model or to the tab that sent it. What is
/// malformed or comes from elsewhere is dropped without a word.
class WebBridge {
public:
    WebBridge(std::shared_ptr<AppModel> model, WindowManager& windows) : model_(std::move(model)), windows_(windows) {}

    /// A user message of the web-process extension, which speaks for main frames only. False when it is not one of
    /// ours.
    bool receive(MainWindowController& sender, WebKitUserMessage* message);

private:
    void apply(MainWindowController& sender, const Url& page, BridgeMessage message);
    Task<void> adoptLink(BridgeMessage::Link link, Url page);

    std::shared_ptr<AppModel> model_;
    WindowManager& windows_;
};

}  // namespace parvela
