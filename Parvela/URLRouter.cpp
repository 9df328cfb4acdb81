#include "URLRouter.h"

#include "Support/WaitingLines.h"
#include "Windows/MainWindow.h"
#include "Windows/MainWindowController.h"
#include "Windows/WindowManager.h"

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/OAuthHandoff.h>
#include <ParvelaKit/ParvelaIntents.h>
#include <Platform/FileRevealer.h>

#include <utility>
#include <variant>

#include <fmt/format.h>

namespace parvela {

namespace {

template <class... Handlers>
struct Overloaded : Handlers... {
    using Handlers::operator()...;
};

}  // namespace

void URLRouter::open(const Url& url) {
    // Only the two lower-case words name web pages here.
    if (url.scheme() == "http" || url.scheme() == "https") {
        loadInFront(url);
        return;
    }
    if (completeSignIn(url)) return;
    const auto link = DeepLink::parse(url);
    if (!link) return;
    std::visit(Overloaded{
                   [&](const DeepLink::AddTask& add) { addShared(shared_from_this(), add.content).detach(); },
                   [&](const DeepLink::OpenTask& task) { openTask(shared_from_this(), task.key).detach(); },
                   [&](const DeepLink::OpenPath& page) {
                       windows_.showMainWindow();
                       if (auto* const tab = windows_.frontController()) tab->openPath(page.path);
                   },
                   [&](const DeepLink::QuickAdd&) { surfaces_.showQuickAdd(); },
               },
               link->action);
}

void URLRouter::open(const DeepLinkTarget& target, const std::optional<std::string>& activationToken) {
    std::visit(Overloaded{
                   [&](const DeepLinkTarget::Link& link) { open(link.url); },
                   [&](const DeepLinkTarget::File& file) {
                       const CharPtr path(g_filename_from_uri(file.url.text().c_str(), nullptr, nullptr));
                       if (path) revealFile(path.get(), activationToken.value_or("")).detach();
                   },
               },
               target.target);
}

void URLRouter::loadInFront(const Url& url) {
    windows_.showMainWindow();
    if (auto* const tab = windows_.frontController()) tab->load(url);
}

/// The browser comes back from a sign-in: the tab that waits takes it, or the front one.
bool URLRouter::completeSignIn(const Url& url) {
    if (!OAuthHandoff::isCallback(url)) return false;
    const auto completion = OAuthHandoff::completionURL(model_->server.get().appURL, url);
    const auto waiting = windows_.takeSignInTab();
    if (waiting && waiting->window()) {
        waiting->window()->select(*waiting);
        waiting->window()->present();
        if (completion) waiting->load(*completion);
    } else if (completion) {
        loadInFront(*completion);
    } else {
        windows_.showMainWindow();
    }
    return true;
}

Url URLRouter::pageOf(const TaskSummary& task) const {
    const ServerConfig& server = model_->server.get();
    const auto resolved = task.url ? server.appURL.resolving(*task.url) : std::nullopt;
    return resolved ? *resolved : server.appPage("/t/" + task.key);
}

Task<void> URLRouter::openTask(std::shared_ptr<URLRouter> self, std::string key) {
    if (key.size() > ParvelaIntents::longestText) co_return;
    const std::string title = "Couldn't open " + key;
    auto connecting = self->model_->session.client();
    const auto api = co_await connecting;
    if (!api) {
        self->windows_.showMainWindow();
        self->surfaces_.showAlert(title, APIError::missingToken().message());
        co_return;
    }
    auto asking = api->send<TaskSummary>(Endpoint::task(key));
    const auto task = co_await asking;
    if (task) {
        self->loadInFront(self->pageOf(*task));
    } else if (const auto& error = task.error().error()) {
        self->windows_.showMainWindow();
        self->surfaces_.showAlert(title, error->message());
    }
}

Task<void> URLRouter::addShared(std::shared_ptr<URLRouter> self, SharedContent content) {
    const std::string title = "Couldn't add the shared task";
    auto connecting = self->model_->session.client();
    const auto api = co_await connecting;
    if (!api) {
        self->surfaces_.showSettings();
        co_return;
    }
    if (!self->model_->defaultBoardID.get()) {
        auto refreshing = self->model_->refreshBoards();
        co_await refreshing;
    }
    const auto board = self->model_->defaultBoardID.get();
    if (!board) {
        const auto error = self->model_->boardsError.get();
        self->surfaces_.showAlert(title, error.value_or("Pick a default board in Settings first."));
        co_return;
    }
    const std::string shared = content.title;
    QuickAddSubmission submission{.line = std::move(content.title),
                                  .board = *board,
                                  .today = self->model_->session.clock().today(),
                                  .description = std::move(content.description)};
    auto lines = self->waitingLines_.lock();
    if (!lines) co_return;
    const auto& prefs = self->model_->session.prefs();
    auto adding = lines->queue().submit(std::move(submission), prefs.defaultBoardName().value_or(std::string()), *api);
    lines.reset();  // the application may end before the answer comes
    const auto added = co_await adding;
    if (added && added->task) {
        const TaskSummary& task = *added->task;
        self->model_->tasksChanged();
        self->surfaces_.notify(UserNotification{.title = fmt::format("Added {} — {}", task.key, task.title),
                                                .identifier = "added-" + task.id,
                                                .target = DeepLinkTarget{DeepLinkTarget::Link{self->pageOf(task)}}});
    } else if (added) {
        const auto now = self->model_->session.clock().now().time_since_epoch().count();
        self->surfaces_.notify(
            UserNotification{.title = shared,
                             .body = added->note.value_or(std::string()),
                             .identifier = fmt::format("waiting-{}", now),
                             .target = DeepLinkTarget{DeepLinkTarget::Link{DeepLink{DeepLink::QuickAdd{}}.url()}}});
    } else if (const auto& failure = added.error().apiFailure();
               failure && failure->error() && failure->error()->kind() == APIError::Case::missingToken) {
        self->surfaces_.showSettings();
    } else if (!added.error().message().empty()) {
        self->surfaces_.showAlert(title, added.error().message());
    }
}

}  // namespace parvela
