#include <ParvelaKit/Preferences.h>

#include <cmath>
#include <limits>
#include <utility>

#include <fmt/format.h>

namespace parvela {

namespace {

template <class T>
std::optional<T> readValue(const KeyValueStore& store, std::string_view key) {
    auto value = store.get(key);
    if (!value) return std::nullopt;
    auto* typed = std::get_if<T>(&*value);
    return typed ? std::optional<T>(std::move(*typed)) : std::nullopt;
}

/// People edit the file: 0 and 1 serve as "no" and "yes".
std::optional<bool> readFlag(const KeyValueStore& store, std::string_view key) {
    if (const auto number = readValue<std::int64_t>(store, key)) return *number != 0;
    return readValue<bool>(store, key);
}

/// 600.0 is as good as 600.
std::optional<std::int64_t> readInteger(const KeyValueStore& store, std::string_view key) {
    constexpr double limit = 9007199254740992;  // 2^53: up to here every integer is a double
    const auto number = readValue<double>(store, key);
    if (number && *number == std::floor(*number) && std::abs(*number) <= limit) {
        return static_cast<std::int64_t>(*number);
    }
    return readValue<std::int64_t>(store, key);
}

template <class T>
void writeValue(KeyValueStore& store, std::string_view key, std::optional<T> value) {
    if (value) {
        store.set(key, std::move(*value));
    } else {
        store.remove(key);
    }
}

std::uint32_t storedMask(const KeyValueStore& store, std::string_view key, std::uint32_t missing) {
    const auto value = readInteger(store, key);
    const bool fits = value && *value >= 0 && *value <= std::numeric_limits<std::uint32_t>::max();
    return fits ? static_cast<std::uint32_t>(*value) : missing;
}

std::string linkedApiKey(std::string_view origin) {
    return fmt::format("linkedAPI|{}", origin);
}
std::string linkInfoKey(std::string_view origin) {
    return fmt::format("linkInfo|{}", origin);
}

}  // namespace

ServerConfig::Mode Preferences::serverMode() const {
    const auto word = readValue<std::string>(*store_, "serverMode");
    return word ? serverModeFrom(*word).value_or(ServerConfig::Mode::production) : ServerConfig::Mode::production;
}

void Preferences::setServerMode(ServerConfig::Mode mode) const {
    store_->set("serverMode", std::string(rawValue(mode)));
}

std::optional<LinkInfo> Preferences::linkInfo(std::string_view appOrigin) const {
    const auto data = readValue<Data>(*store_, linkInfoKey(appOrigin));
    return data ? LinkInfo::fromJson(data->bytes) : std::nullopt;
}

void Preferences::setLinkInfo(std::string_view appOrigin, const std::optional<LinkInfo>& info) const {
    writeValue<Data>(*store_, linkInfoKey(appOrigin), info ? std::optional(Data{info->json()}) : std::nullopt);
}

Preferences::OptionalText Preferences::linkedApi(std::string_view appOrigin) const {
    return readValue<std::string>(*store_, linkedApiKey(appOrigin));
}

void Preferences::setLinkedApi(std::string_view appOrigin, OptionalText url) const {
    writeValue(*store_, linkedApiKey(appOrigin), std::move(url));
}

Preferences::OptionalText Preferences::customAppURL() const {
    return readValue<std::string>(*store_, "customAppURL");
}
void Preferences::setCustomAppURL(OptionalText value) const {
    writeValue(*store_, "customAppURL", std::move(value));
}

Preferences::OptionalText Preferences::customApiURL() const {
    return readValue<std::string>(*store_, "customAPIURL");
}
void Preferences::setCustomApiURL(OptionalText value) const {
    writeValue(*store_, "customAPIURL", std::move(value));
}

Preferences::OptionalText Preferences::appURLOverride() const {
    return readValue<std::string>(*store_, "ParvelaAppURL");
}
void Preferences::setAppURLOverride(OptionalText value) const {
    writeValue(*store_, "ParvelaAppURL", std::move(value));
}

Preferences::OptionalText Preferences::apiURLOverride() const {
    return readValue<std::string>(*store_, "ParvelaAPIURL");
}
void Preferences::setApiURLOverride(OptionalText value) const {
    writeValue(*store_, "ParvelaAPIURL", std::move(value));
}

Preferences::OptionalText Preferences::defaultBoardID() const {
    return readValue<std::string>(*store_, "defaultBoardID");
}
void Preferences::setDefaultBoardID(OptionalText value) const {
    writeValue(*store_, "defaultBoardID", std::move(value));
}

Preferences::OptionalText Preferences::defaultBoardName() const {
    return readValue<std::string>(*store_, "defaultBoardName");
}
void Preferences::setDefaultBoardName(OptionalText value) const {
    writeValue(*store_, "defaultBoardName", std::move(value));
}

Preferences::OptionalText Preferences::dailySummaryLastSent() const {
    return readValue<std::string>(*store_, "dailySummaryLastSent");
}
void Preferences::setDailySummaryLastSent(OptionalText value) const {
    writeValue(*store_, "dailySummaryLastSent", std::move(value));
}
Preferences::OptionalText Preferences::dailySummaryDaysSent() const {
    return readValue<std::string>(*store_, "dailySummaryDaysSent");
}
void Preferences::setDailySummaryDaysSent(OptionalText value) const {
    writeValue(*store_, "dailySummaryDaysSent", std::move(value));
}

Preferences::OptionalText Preferences::pushToken() const {
    return readValue<std::string>(*store_, "pushToken");
}
void Preferences::setPushToken(OptionalText value) const {
    writeValue(*store_, "pushToken", std::move(value));
}

Preferences::OptionalText Preferences::lastURL() const {
    return readValue<std::string>(*store_, "lastURL");
}
void Preferences::setLastURL(OptionalText value) const {
    writeValue(*store_, "lastURL", std::move(value));
}

Preferences::OptionalText Preferences::lastWindowFrame() const {
    return readValue<std::string>(*store_, "macLastWindowFrame");
}
void Preferences::setLastWindowFrame(OptionalText value) const {
    writeValue(*store_, "macLastWindowFrame", std::move(value));
}

bool Preferences::hotKeyEnabled() const {
    return readFlag(*store_, "hotKeyEnabled").value_or(true);
}
void Preferences::setHotKeyEnabled(bool enabled) const {
    store_->set("hotKeyEnabled", enabled);
}

std::uint32_t Preferences::hotKeyCode() const {
    return storedMask(*store_, "hotKeyCode", 49);
}
void Preferences::setHotKeyCode(std::uint32_t code) const {
    store_->set("hotKeyCode", std::int64_t{code});
}

std::uint32_t Preferences::hotKeyModifiers() const {
    return storedMask(*store_, "hotKeyModifiers", 6144);
}
void Preferences::setHotKeyModifiers(std::uint32_t mask) const {
    store_->set("hotKeyModifiers", std::int64_t{mask});
}

bool Preferences::dailySummaryEnabled() const {
    return readFlag(*store_, "dailySummaryEnabled").value_or(false);
}
void Preferences::setDailySummaryEnabled(bool enabled) const {
    store_->set("dailySummaryEnabled", enabled);
}

std::int64_t Preferences::dailySummaryMinutes() const {
    return readInteger(*store_, "dailySummaryMinutes").value_or(540);
}
void Preferences::setDailySummaryMinutes(std::int64_t minutes) const {
    store_->set("dailySummaryMinutes", minutes);
}

bool Preferences::notificationsEnabled() const {
    return readFlag(*store_, "notificationsEnabled").value_or(true);
}
void Preferences::setNotificationsEnabled(bool enabled) const {
    store_->set("notificationsEnabled", enabled);
}

std::optional<Data> Preferences::windowState() const {
    return readValue<Data>(*store_, "macWindowState");
}
void Preferences::setWindowState(const std::optional<Data>& state) const {
    writeValue(*store_, "macWindowState", state);
}

Preferences::OptionalText Preferences::earlierWindowFrame() const {
    return readValue<std::string>(*store_, "ParvelaMainWindow");
}

double Preferences::pageZoom() const {
    const auto whole = readInteger(*store_, "pageZoom");
    const double zoom = whole ? static_cast<double>(*whole) : readValue<double>(*store_, "pageZoom").value_or(1);
    return zoom >= 0.5 && zoom <= 3 ? zoom : 1;
}
void Preferences::setPageZoom(double zoom) const {
    store_->set("pageZoom", zoom);
}

bool Preferences::spellCheckingEnabled() const {
    return readFlag(*store_, "spellCheckingEnabled").value_or(true);
}
void Preferences::setSpellCheckingEnabled(bool enabled) const {
    store_->set("spellCheckingEnabled", enabled);
}

Preferences::OptionalText Preferences::spellCheckingLanguages() const {
    return readValue<std::string>(*store_, "spellCheckingLanguages");
}
void Preferences::setSpellCheckingLanguages(OptionalText languages) const {
    writeValue(*store_, "spellCheckingLanguages", std::move(languages));
}

bool Preferences::startsHidden() const {
    return readFlag(*store_, "startsHidden").value_or(true);
}
void Preferences::setStartsHidden(bool hidden) const {
    store_->set("startsHidden", hidden);
}
bool Preferences::safeRenderer() const {
    return readFlag(*store_, "safeRenderer").value_or(false);
}
void Preferences::setSafeRenderer(bool safe) const {
    store_->set("safeRenderer", safe);
}

std::optional<Instant> Preferences::lastUpdateCheck() const {
    const auto time = readInteger(*store_, "lastUpdateCheck");
    return time && *time >= 0 ? std::optional(Instant(std::chrono::milliseconds(*time))) : std::nullopt;
}
void Preferences::setLastUpdateCheck(Instant time) const {
    store_->set("lastUpdateCheck", std::int64_t{time.time_since_epoch().count()});
}

Preferences::OptionalText Preferences::skippedUpdate() const {
    return readValue<std::string>(*store_, "skippedUpdate");
}
void Preferences::setSkippedUpdate(OptionalText version) const {
    writeValue(*store_, "skippedUpdate", std::move(version));
}

Preferences::OptionalText Preferences::titlebarDoubleClickAction() const {
    return readValue<std::string>(*store_, "AppleActionOnDoubleClick");
}

std::optional<bool> Preferences::titlebarDoubleClickMinimizes() const {
    return readFlag(*store_, "AppleMiniaturizeOnDoubleClick");
}

}  // namespace parvela
