#pragma once

#include "Model/AppModel.h"
#include "Model/NotificationCentre.h"
#include "Model/Notifier.h"

#include <ParvelaKit/DeepLink.h>
#include <ParvelaKit/Task.h>
#include <ParvelaKit/Url.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace parvela {

class WaitingLines;
class WindowManager;

/// What the router asks of the rest of the application.
struct URLRouterSurfaces {
    std::function<void(const std::string& message, const std::string& informative)> showAlert;
    std::function<void()> showQuickAdd;
    std::function<void()> showSettings;
    std::function<void(UserNotification)> notify;
};

/// Opens what reaches the application from outside: web pages, the return from a sign-in, and deep links. URLs may come
/// from any program; what makes no sense is ignored.
class URLRouter : public std::enable_shared_from_this<URLRouter> {
public:
    URLRouter(std::shared_ptr<AppModel> model, WindowManager& windows, std::weak_ptr<WaitingLines> waitingLines,
              URLRouterSurfaces surfaces)
        : model_(std::move(model)),
          windows_(windows),
          waitingLines_(std::move(waitingLines)),
          surfaces_(std::move(surfaces)) {}

    void open(const Url& url);
    /// `activationToken` lets another program come to the front.
    void open(const DeepLinkTarget& target, const std::optional<std::string>& activationToken = std::nullopt);
    /// Loads a page in the front window, which may be a new one.
    void loadInFront(const Url& url);
    /// The web page of a task: what the service says, or its own place in the web app.
    Url pageOf(const TaskSummary& task) const;

private:
    bool completeSignIn(const Url& url);
    static Task<void> openTask(std::shared_ptr<URLRouter> self, std::string key);
    static Task<void> addShared(std::shared_ptr<URLRouter> self, SharedContent content);

    std::shared_ptr<AppModel> model_;
    WindowManager& windows_;
    std::weak_ptr<WaitingLines> waitingLines_;
    URLRouterSurfaces surfaces_;
};

}  // namespace parvela
