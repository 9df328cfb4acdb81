#pragma once

#include <ParvelaKit/AppVersion.h>
#include <ParvelaKit/Appcast.h>
#include <ParvelaKit/Clock.h>
#include <ParvelaKit/Preferences.h>
#include <ParvelaKit/Task.h>
#include <ParvelaKit/Transport.h>
#include <ParvelaKit/Url.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace parvela {

/// Why a check for a new version came to nothing.
enum class UpdateError {
    unreachable,
    timedOut,
    badAnswer,  ///< not the feed: another status, too large, or not in the feed's format
    notSigned,
};
/// The user-facing text.
std::string_view message(UpdateError error);

/// What runs is the newest.
struct UpToDate {
    bool operator==(const UpToDate&) const = default;
};
using UpdateResult = std::variant<UpToDate, appcast::Offer, UpdateError>;

/// Finds out whether there is a newer version. It offers; fetching and installing are left to the user and the package
/// manager.
class Updater {
public:
    virtual ~Updater() = default;

    /// Asks now. What is offered is newer than what runs.
    virtual Task<UpdateResult> check() = 0;
    /// Whether a check that nobody asked for may be made: the feed has not answered for a day.
    virtual bool isDue() const = 0;
    /// Of a version that the user does not want, checks that nobody asked for say nothing.
    virtual void skip(const AppVersion& version) = 0;
    virtual bool isSkipped(const AppVersion& version) const = 0;
};

/// Where new versions are announced, and whose signature counts.
struct UpdateFeed {
    Url address;
    FeedKey key;

    /// None unless the address is an https URL (http on this machine, for tests) and the key is one.
    static std::optional<UpdateFeed> from(std::string_view address, std::string_view base64Key);
    /// What this program was built with; none when it was built without.
    static std::optional<UpdateFeed> ofThisBuild();
};

/// Reads an appcast. Redirects are not followed.
class AppcastUpdater final : public Updater {
public:
    AppcastUpdater(UpdateFeed feed, AppVersion current, Transport transport, Preferences prefs,
                   std::shared_ptr<const Clock> clock);

    Task<UpdateResult> check() override;
    bool isDue() const override;
    void skip(const AppVersion& version) override;
    bool isSkipped(const AppVersion& version) const override;

private:
    struct Shared;
    static Task<UpdateResult> checkNow(std::shared_ptr<const Shared> shared);

    std::shared_ptr<const Shared> shared_;
};

}  // namespace parvela
