#pragma once

#include <ParvelaKit/Clock.h>
#include <ParvelaKit/Url.h>

#include <optional>
#include <string>
#include <string_view>

namespace parvela {

/// What is remembered about the link between this device and a web app. Holds no secret.
struct LinkInfo {
    Url apiBase;  ///< the API site that the web app named
    std::optional<std::string> workspaceId;
    std::optional<std::string> workspaceName;
    std::optional<std::string> userName;
    Instant linkedAt;

    bool operator==(const LinkInfo&) const = default;

    /// A JSON object with the field names as keys, sorted. `linkedAt` is milliseconds since 1970-01-01 UTC; absent
    /// fields are left out.
    std::string json() const;
    /// None unless it is what json() writes; unknown keys are ignored.
    static std::optional<LinkInfo> fromJson(std::string_view json);
};

}  // namespace parvela
