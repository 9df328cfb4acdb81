#include <ParvelaKit/BuildInfo.h>
#include <ParvelaKit/Updater.h>

#include <chrono>
#include <utility>

#include <fmt/format.h>

namespace parvela {

namespace {

constexpr std::chrono::hours pause{24};
constexpr std::chrono::seconds patience{30};

bool isThisMachine(const Url& url) {
    const std::string host = url.lowercaseHost();
    return host == "localhost" || host == "127.0.0.1" || host == "::1";
}

UpdateError reason(TransportError error) {
    switch (error) {
        case TransportError::timedOut:
            return UpdateError::timedOut;
        case TransportError::invalidResponse:
            return UpdateError::badAnswer;
        case TransportError::unreachable:
        case TransportError::badURL:
        case TransportError::cancelled:
            return UpdateError::unreachable;
    }
    return UpdateError::unreachable;
}

}  // namespace

std::string_view message(UpdateError error) {
    switch (error) {
        case UpdateError::unreachable:
            return "The update server could not be reached. Check your internet connection and try again.";
        case UpdateError::timedOut:
            return "The update server did not answer in time. Try again later.";
        case UpdateError::badAnswer:
            return "The update server's answer could not be read. Try again later.";
        case UpdateError::notSigned:
            return "The update server's answer is not signed by the makers of this program, so nothing in it is "
                   "offered.";
    }
    return {};
}

std::optional<UpdateFeed> UpdateFeed::from(std::string_view address, std::string_view base64Key) {
    auto url = Url::parse(address);
    const auto key = FeedKey::fromBase64(base64Key);
    if (!url || !key || url->lowercaseHost().empty()) return std::nullopt;
    const std::string scheme = url->lowercaseScheme();
    if (scheme != "https" && !(scheme == "http" && isThisMachine(*url))) return std::nullopt;
    return UpdateFeed{.address = std::move(*url), .key = *key};
}

std::optional<UpdateFeed> UpdateFeed::ofThisBuild() {
    return from(BuildInfo::updateFeedURL(), BuildInfo::updatePublicKey());
}

struct AppcastUpdater::Shared {
    UpdateFeed feed;
    AppVersion current;
    Transport transport;
    Preferences prefs;
    std::shared_ptr<const Clock> clock;
};

AppcastUpdater::AppcastUpdater(UpdateFeed feed, AppVersion current, Transport transport, Preferences prefs,
                               std::shared_ptr<const Clock> clock)
    : shared_(std::make_shared<const Shared>(std::move(feed), std::move(current), std::move(transport),
                                             std::move(prefs), std::move(clock))) {
}

Task<UpdateResult> AppcastUpdater::check() {
    return checkNow(shared_);
}

Task<UpdateResult> AppcastUpdater::checkNow(std::shared_ptr<const Shared> shared) {
    HttpRequest request{.method = "GET",
                        .url = shared->feed.address,
                        .headers = {{"Accept", "application/rss+xml, application/xml;q=0.9"},
                                    {"User-Agent", fmt::format("Parvela/{}", shared->current.text())}},
                        .body = std::nullopt,
                        .timeout = patience};
    auto exchange = shared->transport(std::move(request), {});
    const auto response = co_await exchange;
    const bool answered = response || response.error() == TransportError::invalidResponse;
    if (answered) shared->prefs.setLastUpdateCheck(shared->clock->now());
    if (!response) co_return UpdateResult(reason(response.error()));
    if (response->status != 200) co_return UpdateResult(UpdateError::badAnswer);

    auto offer = appcast::newer(response->body, shared->feed.key, shared->current);
    if (!offer) {
        const bool isForeign = offer.error() == appcast::Error::notSigned;
        co_return UpdateResult(isForeign ? UpdateError::notSigned : UpdateError::badAnswer);
    }
    if (!*offer) co_return UpdateResult(UpToDate{});
    co_return UpdateResult(std::move(**offer));
}

bool AppcastUpdater::isDue() const {
    const auto last = shared_->prefs.lastUpdateCheck();
    const Instant now = shared_->clock->now();
    // A check in the future comes from a clock that was wrong.
    return !last || *last > now || now - *last >= pause;
}

void AppcastUpdater::skip(const AppVersion& version) {
    shared_->prefs.setSkippedUpdate(version.text());
}

bool AppcastUpdater::isSkipped(const AppVersion& version) const {
    return shared_->prefs.skippedUpdate() == version.text();
}

}  // namespace parvela
