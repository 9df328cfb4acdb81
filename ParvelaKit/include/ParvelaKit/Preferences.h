#pragma once

#include <ParvelaKit/Clock.h>
#include <ParvelaKit/KeyValueStore.h>
#include <ParvelaKit/LinkInfo.h>
#include <ParvelaKit/ServerConfig.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace parvela {

/// The user's choices, typed, over one KeyValueStore. Copies share the store.
///
/// A missing key, and a stored value of another type, read as the default that the getter's comment names ("none" where
/// it names no other). Setting none removes the key.
class Preferences {
public:
    using OptionalText = std::optional<std::string>;

    explicit Preferences(std::shared_ptr<KeyValueStore> store) : store_(std::move(store)) {}

    /// "serverMode"; production, also for an unknown word.
    ServerConfig::Mode serverMode() const;
    void setServerMode(ServerConfig::Mode mode) const;
    /// "customAppURL" and "customAPIURL": as typed, not normalised.
    OptionalText customAppURL() const;
    void setCustomAppURL(OptionalText url) const;
    OptionalText customApiURL() const;
    void setCustomApiURL(OptionalText url) const;
    /// "ParvelaAppURL" and "ParvelaAPIURL": replace the addresses of any mode; set outside the interface.
    OptionalText appURLOverride() const;
    void setAppURLOverride(OptionalText url) const;
    OptionalText apiURLOverride() const;
    void setApiURLOverride(OptionalText url) const;

    /// "linkedAPI|" + origin: the API site named by the web app at that origin when it linked this device.
    OptionalText linkedApi(std::string_view appOrigin) const;
    void setLinkedApi(std::string_view appOrigin, OptionalText url) const;
    /// "linkInfo|" + origin.
    std::optional<LinkInfo> linkInfo(std::string_view appOrigin) const;
    void setLinkInfo(std::string_view appOrigin, const std::optional<LinkInfo>& info) const;

    /// "defaultBoardID" and "defaultBoardName": the board of quick add when none is named.
    OptionalText defaultBoardID() const;
    void setDefaultBoardID(OptionalText id) const;
    OptionalText defaultBoardName() const;
    void setDefaultBoardName(OptionalText name) const;

    /// "hotKeyEnabled"; true.
    bool hotKeyEnabled() const;
    void setHotKeyEnabled(bool enabled) const;
    /// "hotKeyCode": a virtual key code; 49, the space bar.
    std::uint32_t hotKeyCode() const;
    void setHotKeyCode(std::uint32_t code) const;
    /// "hotKeyModifiers": a mask; 6144, which is 0x1800, control and option.
    std::uint32_t hotKeyModifiers() const;
    void setHotKeyModifiers(std::uint32_t mask) const;

    /// "dailySummaryEnabled"; false.
    bool dailySummaryEnabled() const;
    void setDailySummaryEnabled(bool enabled) const;
    /// "dailySummaryMinutes" after midnight; 540.
    std::int64_t dailySummaryMinutes() const;
    void setDailySummaryMinutes(std::int64_t minutes) const;
    /// "dailySummaryLastSent": the day on which the summary was last sent.
    OptionalText dailySummaryLastSent() const;
    void setDailySummaryLastSent(OptionalText day) const;
    /// "dailySummaryDaysSent": that day and those before it, parted by blanks. A clock that is set back and forth does
    /// not make them due again.
    OptionalText dailySummaryDaysSent() const;
    void setDailySummaryDaysSent(OptionalText days) const;

    /// "notificationsEnabled"; true.
    bool notificationsEnabled() const;
    void setNotificationsEnabled(bool enabled) const;
    /// "pushToken": the device token last registered for remote notifications.
    OptionalText pushToken() const;
    void setPushToken(OptionalText token) const;

    /// "lastURL": the page last shown in a main window.
    OptionalText lastURL() const;
    void setLastURL(OptionalText url) const;
    /// "macWindowState": the saved windows and tabs, as WindowState writes them.
    std::optional<Data> windowState() const;
    void setWindowState(const std::optional<Data>& state) const;
    /// "macLastWindowFrame": the frame of the window that closed last, in rectangle text form.
    OptionalText lastWindowFrame() const;
    void setLastWindowFrame(OptionalText frame) const;
    /// "ParvelaMainWindow": the frame that earlier versions saved. Only read.
    OptionalText earlierWindowFrame() const;
    /// "pageZoom" of new windows, 0.5 to 3; 1.
    double pageZoom() const;
    void setPageZoom(double zoom) const;

    /// "spellCheckingEnabled"; true.
    bool spellCheckingEnabled() const;
    void setSpellCheckingEnabled(bool enabled) const;
    /// "spellCheckingLanguages": tags such as "en_US", separated by blanks; none for the languages of the session.
    OptionalText spellCheckingLanguages() const;
    void setSpellCheckingLanguages(OptionalText languages) const;
    /// "startsHidden": whether the start at login shows no window; true.
    bool startsHidden() const;
    void setStartsHidden(bool hidden) const;
    /// "safeRenderer": whether windows and pages are drawn without the graphics card; read at the start; false.
    bool safeRenderer() const;
    void setSafeRenderer(bool safe) const;

    /// "lastUpdateCheck": when the update feed last answered, in milliseconds since 1970.
    std::optional<Instant> lastUpdateCheck() const;
    void setLastUpdateCheck(Instant time) const;
    /// "skippedUpdate": the version that the user does not want to hear of again.
    OptionalText skippedUpdate() const;
    void setSkippedUpdate(OptionalText version) const;

    /// "AppleActionOnDoubleClick": "Maximize", "Fill", "Minimize" or "None", for a double click on a title bar.
    OptionalText titlebarDoubleClickAction() const;
    /// "AppleMiniaturizeOnDoubleClick": the older form of the same choice.
    std::optional<bool> titlebarDoubleClickMinimizes() const;

    KeyValueStore& store() const noexcept { return *store_; }

private:
    std::shared_ptr<KeyValueStore> store_;
};

}  // namespace parvela
