#include "BuildSettings.h"

#include <ParvelaKit/BuildInfo.h>
#include <ParvelaKit/Text.h>

namespace parvela {

std::string_view BuildInfo::version() {
    return buildSettings::version.empty() ? "1.0" : buildSettings::version;
}

std::optional<std::string> BuildInfo::keychainGroup() {
    return groupName(buildSettings::keychainGroup);
}

std::optional<std::string> BuildInfo::appGroup() {
    return groupName(buildSettings::appGroup);
}

std::string_view BuildInfo::updateFeedURL() {
    return buildSettings::updateFeedURL;
}

std::string_view BuildInfo::updatePublicKey() {
    return buildSettings::updatePublicKey;
}

std::optional<std::string> BuildInfo::groupName(std::string_view setting) {
    const std::string_view name = trimmed(setting);
    if (name.empty() || name.contains("$(")) return std::nullopt;
    return std::string(name);
}

}  // namespace parvela
