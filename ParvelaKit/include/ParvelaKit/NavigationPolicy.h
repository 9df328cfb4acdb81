#pragma once

#include <ParvelaKit/Clock.h>
#include <ParvelaKit/ServerConfig.h>
#include <ParvelaKit/Url.h>

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace parvela {

/// Where a URL that a page wants to go to ends up. Pages of the web app stay in its windows, everything else leaves
/// them.
///
/// One policy for each web view. Without a user's gesture a page makes other programs start, or tabs open, at most once
/// a second; with one it gets at most five tabs.
class NavigationPolicy {
public:
    enum class Frame {
        main,
        child,
        /// The engine does not say. The rules of ContentFilter then stop a main frame that must not go there, and the
        /// blocked URL is asked about again as main.
        unknown,
    };
    enum class Gesture { user, none };
    enum class Purpose { show, download };

    enum class Action {
        allow,
        cancel,
        download,
        openTab,          ///< only for a new window: in a tab of ours
        openInBrowser,    ///< the user's default browser takes `url`
        openWithHandler,  ///< the program for the scheme of `url` takes it, such as a mail program
        handOff,  ///< sign-in with an outside provider: the browser takes `url`, this view waits for the callback
    };

    struct Decision {
        Action action = Action::cancel;
        /// What to open, for the actions that open something.
        std::optional<Url> url;

        bool operator==(const Decision&) const = default;
    };

    explicit NavigationPolicy(std::shared_ptr<const Clock> clock) : clock_(std::move(clock)) {}

    /// A frame is about to load `url`, as the engine writes it. For every action but allow and download it stays where
    /// it is.
    Decision navigation(std::string_view url, Frame frame, Gesture gesture, Purpose purpose,
                        const ServerConfig& server);

    // The engine announces the redirects of all frames alike, and names only where a load began when the filter stops
    // it. So the redirects are kept while the main frame loads.
    void mainLoadStarted();
    void redirected(std::string_view url);
    void mainLoadEnded();
    /// The user has chosen `url`, by a click or a key: going there outside does not wait for its turn.
    void chosen(std::string_view url) { chosen_ = url; }
    /// The filter has stopped the main frame's load that began at `url`: where it goes instead. When it may have been
    /// redirected to several places, that is where it began: a browser follows the right redirect by itself.
    Decision blocked(std::string_view url, const ServerConfig& server);

    /// A page asks for a new window that shows `url`. No window opens unless the action is openTab.
    Decision newWindow(std::string_view url, Gesture gesture, const ServerConfig& server);

    enum class Display { supported, unsupported };  ///< whether the engine can show the response's type
    /// An answer has arrived: allow or download.
    static Action response(Display display, std::optional<std::string_view> contentDisposition);

private:
    bool mayOpenTab(Gesture gesture);
    Decision outside(Action action, Url url, Gesture gesture);

    std::shared_ptr<const Clock> clock_;
    std::optional<Instant> lastOutside_;
    std::vector<Instant> tabsOpened_;
    bool mainFrameLoads_ = false;
    std::set<std::string> redirects_;
    std::string chosen_;
};

}  // namespace parvela
