#include <ParvelaKit/NavigationPolicy.h>
#include <ParvelaKit/OAuthHandoff.h>
#include <ParvelaKit/Text.h>

#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

namespace parvela {

namespace {

using namespace std::chrono_literals;

/// A page that opens more at a time is not asked for them.
constexpr std::size_t tabsPerGesture = 5;

/// More than the engine follows in one load.
constexpr std::size_t mostRedirects = 64;

/// Whatever has another scheme is for another program.
bool isBrowserScheme(std::string_view scheme) {
    constexpr std::array schemes =
        std::to_array<std::string_view>({"http", "https", "about", "blob", "data", "javascript", "file"});
    return std::ranges::find(schemes, scheme) != schemes.end();
}

bool isWebScheme(std::string_view scheme) {
    return scheme == "http" || scheme == "https";
}

bool leavesForSignIn(const Url& url, const ServerConfig& server) {
    return OAuthHandoff::isSignInURL(url) && !server.isAppOrigin(url);
}

/// The content filter compares paths as they are written, with needless escapes.
bool isSignInUnseenByFilter(const Url& url) {
    const std::string_view text = url.text();
    const auto path = text.find('/', text.find("://") + 3);
    return !text.substr(std::min(path, text.size())).starts_with("/api/auth/signin/");
}

/// Whether a main frame may show it.
bool mayStay(const Url& url, const ServerConfig& server) {
    return isBrowserScheme(url.lowercaseScheme()) && server.isInApp(url) && !leavesForSignIn(url, server);
}

}  // namespace

NavigationPolicy::Decision NavigationPolicy::navigation(std::string_view text, Frame frame, Gesture gesture,
                                                        Purpose purpose, const ServerConfig& server) {
    if (purpose == Purpose::download) return {Action::download, std::nullopt};
    const auto url = Url::parseFromEngine(text);
    if (!url || url->scheme().empty()) return {Action::cancel, std::nullopt};
    if (!isBrowserScheme(url->lowercaseScheme())) return outside(Action::openWithHandler, *url, gesture);
    if (frame == Frame::child) return {Action::allow, std::nullopt};

    const bool signIn = leavesForSignIn(*url, server);
    if (frame == Frame::unknown && !(signIn && isSignInUnseenByFilter(*url))) return {Action::allow, std::nullopt};
    if (signIn) return outside(Action::handOff, OAuthHandoff::startURL(server.appURL, *url), gesture);
    if (server.isInApp(*url)) return {Action::allow, std::nullopt};
    return outside(Action::openInBrowser, *url, gesture);
}

void NavigationPolicy::mainLoadStarted() {
    mainFrameLoads_ = true;
    redirects_.clear();
}

void NavigationPolicy::redirected(std::string_view url) {
    if (mainFrameLoads_ && redirects_.size() < mostRedirects) redirects_.emplace(url);
}

void NavigationPolicy::mainLoadEnded() {
    mainFrameLoads_ = false;
    redirects_.clear();
}

NavigationPolicy::Decision NavigationPolicy::blocked(std::string_view text, const ServerConfig& server) {
    const auto redirects = std::exchange(redirects_, {});
    const Gesture gesture = std::exchange(chosen_, {}) == text ? Gesture::user : Gesture::none;
    mainFrameLoads_ = false;
    const auto url = Url::parseFromEngine(text);
    if (!url) return {Action::cancel, std::nullopt};
    if (mayStay(*url, server)) {
        std::vector<std::string_view> stopped;
        for (const std::string& target : redirects) {
            const auto redirect = Url::parseFromEngine(target);
            if (redirect && !mayStay(*redirect, server)) stopped.push_back(target);
        }
        if (stopped.empty()) return {Action::cancel, std::nullopt};
        if (stopped.size() > 1) return outside(Action::openInBrowser, *url, gesture);
        return navigation(stopped.front(), Frame::main, gesture, Purpose::show, server);
    }
    return navigation(text, Frame::main, gesture, Purpose::show, server);
}

NavigationPolicy::Decision NavigationPolicy::newWindow(std::string_view text, Gesture gesture,
                                                       const ServerConfig& server) {
    const auto url = Url::parseFromEngine(text);
    if (!url || url->scheme().empty()) return {Action::cancel, std::nullopt};
    const std::string scheme = url->lowercaseScheme();
    if (!isBrowserScheme(scheme)) return outside(Action::openWithHandler, *url, gesture);
    if (server.isInApp(*url) && leavesForSignIn(*url, server)) {
        return outside(Action::handOff, OAuthHandoff::startURL(server.appURL, *url), gesture);
    }
    if (server.isInApp(*url)) {
        // The rest has a meaning only inside the page that made it, and no other program could open it.
        const bool opens = isWebScheme(scheme) && mayOpenTab(gesture);
        return opens ? Decision{Action::openTab, url} : Decision{Action::cancel, std::nullopt};
    }
    return outside(Action::openInBrowser, *url, gesture);
}

/// One gesture can stand for many requests, so those are counted too.
bool NavigationPolicy::mayOpenTab(Gesture gesture) {
    const Instant now = clock_->now();
    std::erase_if(tabsOpened_, [now](Instant opened) { return opened > now || now - opened >= 1s; });
    if (tabsOpened_.size() >= (gesture == Gesture::user ? tabsPerGesture : 1)) return false;
    tabsOpened_.push_back(now);
    return true;
}

NavigationPolicy::Action NavigationPolicy::response(Display display,
                                                    std::optional<std::string_view> contentDisposition) {
    if (display == Display::unsupported) return Action::download;
    const bool attached = contentDisposition && asciiLowercased(*contentDisposition).starts_with("attachment");
    return attached ? Action::download : Action::allow;
}

NavigationPolicy::Decision NavigationPolicy::outside(Action action, Url url, Gesture gesture) {
    const Instant now = clock_->now();
    const bool tooSoon = lastOutside_ && now >= *lastOutside_ && now - *lastOutside_ < 1s;
    if (gesture == Gesture::none && tooSoon) return {Action::cancel, std::nullopt};
    lastOutside_ = now;
    return {action, std::move(url)};
}

}  // namespace parvela
