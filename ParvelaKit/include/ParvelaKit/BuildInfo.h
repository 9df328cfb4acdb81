#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace parvela {

/// What was settled when this program was built.
struct BuildInfo {
    /// The application's version, such as "1.0.0"; goes into the User-Agent of API calls.
    static std::string_view version();
    /// The group under which companion programs share the token; none when the build names none.
    static std::optional<std::string> keychainGroup();
    /// The name of the settings shared with companion programs; none when the build names none.
    static std::optional<std::string> appGroup();
    /// Address of the update feed and the key that signs it, as the build settings spell them; empty when this build
    /// does not look for new versions.
    static std::string_view updateFeedURL();
    static std::string_view updatePublicKey();

    /// A group name as a build setting spells it: trimmed, and none when empty or when a build variable ("$(") was left
    /// unexpanded.
    static std::optional<std::string> groupName(std::string_view setting);
};

}  // namespace parvela
