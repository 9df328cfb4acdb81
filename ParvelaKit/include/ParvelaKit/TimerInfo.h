#pragma once

#include <ParvelaKit/Clock.h>

#include <optional>
#include <string>
#include <string_view>

namespace parvela {

/// The task timer that runs in the web app.
struct TimerInfo {
    std::string taskKey;  ///< such as "TSK-42"; not empty
    std::string taskTitle;
    std::optional<std::string> boardName;
    Instant startedAt;

    bool operator==(const TimerInfo&) const = default;

    /// A JSON object with the field names as keys, in the order of the fields. `startedAt` is milliseconds since
    /// 1970-01-01 UTC; an absent board is left out.
    std::string json() const;
    /// None unless it is what json() writes; unknown keys are ignored.
    static std::optional<TimerInfo> fromJson(std::string_view json);
};

}  // namespace parvela
