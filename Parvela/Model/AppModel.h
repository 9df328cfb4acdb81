#pragma once

#include "Model/NotificationCentre.h"

#include <ParvelaKit/BridgeMessage.h>
#include <ParvelaKit/Clock.h>
#include <ParvelaKit/Observable.h>
#include <ParvelaKit/ParvelaSession.h>
#include <ParvelaKit/Records.h>
#include <ParvelaKit/ServerConfig.h>
#include <ParvelaKit/TimerInfo.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace parvela {

/// What the model needs of the world. Everything outlives the model or is shared with it.
struct AppModelEnvironment {
    std::shared_ptr<const Clock> clock;
    std::shared_ptr<NotificationCentre> notifications;
    /// Shows the text on the application's launcher; none removes it.
    std::function<void(std::optional<std::string> label)> showBadge;
    /// Sends the stored push token to the service, when there is one.
    std::function<void()> syncPush;
};

/// Why a task could not be made on the default board.
struct CreateTaskError {
    APIFailure failure = APIFailure::cancelled();
    bool noBoard = false;  ///< there is no board to make it on

    std::string message() const;
};

/// The one shared state of the application: the server in force and the link to it, the boards, what is due today, the
/// running timer and the badge. It owns nothing visual; readers subscribe to the fields they show.
///
/// Everything runs on one thread. Operations that call the service suspend only for the call. Two refreshes may
/// overlap; the one that ends last wins, and one whose server or token is no longer in force changes nothing. Held by
/// shared pointers, because an operation keeps the model alive until its call has ended.
class AppModel : public std::enable_shared_from_this<AppModel> {
public:
    /// Reads the preferences. The token is read by reloadCredentials(), which the delegate awaits at launch.
    static std::shared_ptr<AppModel> create(ParvelaSession session, AppModelEnvironment environment);

    const ParvelaSession session;

    Observable<ServerConfig> server;
    Observable<bool> hasToken{false};
    /// Whether the keyring has been asked at all: before that, no token means nothing.
    Observable<bool> knowsCredentials{false};
    /// First characters of the token for Settings; none without a token.
    Observable<std::optional<std::string>> tokenHint;
    Observable<std::optional<LinkInfo>> linkInfo;
    /// In the service's order.
    Observable<std::vector<Board>> boards;
    Observable<std::optional<std::string>> workspaceName;
    Observable<std::optional<std::string>> boardsError;
    Observable<bool> isLoadingBoards{false};
    /// Open and done, in the service's order.
    Observable<std::vector<TaskSummary>> dueToday;
    Observable<std::optional<std::string>> dueError;
    Observable<bool> isLoadingDue{false};
    /// When the due list was last read successfully.
    Observable<std::optional<Instant>> dueLoadedAt;
    Observable<std::optional<TimerInfo>> timer;
    Observable<std::int64_t> badgeCount{0};
    Observable<std::optional<std::string>> defaultBoardID;
    /// Goes up by one with each change of the server; windows compare it with the one they loaded.
    Observable<std::int64_t> serverRevision{0};

    /// Reads again what a link or an unlink can change: server, token, link. A token that another program replaced or
    /// removed ends what was asked for with the old one.
    Task<void> reloadCredentials();
    /// Switches to another server and forgets what came from the old one. Nothing happens when it is the one in force.
    Task<void> setServer(ServerConfig config);

    /// Takes over the link that the page at `sender` offers.
    Task<Result<void, LinkError>> adoptLink(BridgeMessage::Link link, std::optional<Url> sender);
    /// Takes over a personal access token for the server in force.
    Task<Result<void, PastedTokenError>> savePastedToken(std::string text);
    /// Revokes the token and forgets the link. Failed calls do not keep the link.
    Task<Unlinked> unlink();

    /// Boards and due list side by side.
    Task<void> refreshAll();
    Task<void> refreshBoards();
    Task<void> refreshDue();
    /// Tasks were added or changed: announces it, and reads the due list again.
    void tasksChanged();

    /// Completes or reopens a task of the due list: shown at once, taken back when the service refuses.
    Task<void> setDone(std::string taskID, bool done);

    /// Makes a task on the default board, else on the first board.
    Task<Result<TaskSummary, CreateTaskError>> createTask(NewTask task);

    void setDefaultBoard(std::optional<std::string> id);
    void setTimer(std::optional<TimerInfo> info);
    void setBadge(std::int64_t count);
    /// Shows the badge again as it is.
    void updateDockBadge() const;

private:
    AppModel(ParvelaSession session, AppModelEnvironment environment);

    Task<std::optional<ParvelaAPI>> makeClient() const;
    Task<void> refreshThenSyncPush();
    void repairDefaultBoard();
    void persistDefaultBoard();
    /// From now on answers to what was asked for so far are dropped.
    void leaveAccount();
    void forgetLists();
    /// Forgets all that belongs to somebody who is no longer linked.
    void forgetAccount();
    /// Changes one task of the due list, if it is still there.
    void changeDue(const std::string& id, const std::function<void(TaskSummary&)>& change);

    AppModelEnvironment environment_;
    Subscription badgeShown_;
    /// Counts changes of server and link; an answer that was asked for under an earlier count is dropped.
    std::uint64_t epoch_ = 0;
    std::uint64_t credentialReads_ = 0;
    /// Tells the token that was read last from another one, without keeping it.
    std::optional<std::size_t> knownToken_;
};

}  // namespace parvela
