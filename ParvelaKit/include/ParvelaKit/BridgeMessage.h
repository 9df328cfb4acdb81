#pragma once

#include <ParvelaKit/Clock.h>
#include <ParvelaKit/NativeBridge.h>
#include <ParvelaKit/TimerInfo.h>
#include <ParvelaKit/Url.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace parvela {

/// What a page says to the application. Pages are not trusted: whatever is malformed is no message. Who sent a message
/// is for the receiver to check.
struct BridgeMessage {
    /// The user allowed the page to link this device.
    struct Link {
        std::string token;  ///< of the right format
        Url apiBase;        ///< may be sent a token
        std::string workspaceId;
        std::optional<std::string> workspaceName;
        std::optional<std::string> userName;

        bool operator==(const Link&) const = default;
    };
    struct TimerStarted {
        TimerInfo timer;
        bool operator==(const TimerStarted&) const = default;
    };
    struct TimerStopped {
        std::optional<std::string> taskKey;  ///< none: whichever runs
        bool operator==(const TimerStopped&) const = default;
    };
    struct Badge {
        std::int64_t count;  ///< not negative
        bool operator==(const Badge&) const = default;
    };
    struct Boards {
        std::optional<std::string> workspaceId;
        std::vector<BoardRef> boards;  ///< in the page's order, 500 at most
        bool operator==(const Boards&) const = default;
    };
    /// The page draws the window's title bar area by itself.
    struct Shell {
        std::optional<std::int64_t> version;
        bool operator==(const Shell&) const = default;
    };
    struct Unlinked {
        bool operator==(const Unlinked&) const = default;
    };
    struct WindowDrag {
        bool operator==(const WindowDrag&) const = default;
    };
    struct TitlebarDoubleClick {
        bool operator==(const TitlebarDoubleClick&) const = default;
    };

    std::variant<Link, TimerStarted, TimerStopped, Badge, Boards, Shell, Unlinked, WindowDrag, TitlebarDoubleClick>
        content;

    bool operator==(const BridgeMessage&) const = default;

    /// Longer texts are refused unread.
    static constexpr std::size_t maximumTextSize = 4U << 20U;

    /// `now` is the start of a timer whose message names none.
    static std::optional<BridgeMessage> parse(const nlohmann::json& body, Instant now);
    /// The same for a body that arrives as JSON text. Unpaired surrogates in its strings become U+FFFD.
    static std::optional<BridgeMessage> parseText(std::string_view json, Instant now);
};

}  // namespace parvela
