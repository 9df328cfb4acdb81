#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace parvela {

/// A board as the page reports it, for menus.
struct BoardRef {
    std::string id;                       ///< not empty
    std::string name;                     ///< 1 to 200 characters
    std::optional<std::string> colorHex;  ///< "#" and six upper-case hexadecimal digits
    std::optional<std::string> section;   ///< 1 to 100 characters

    bool operator==(const BoardRef&) const = default;
};

/// Boards that stand together under one heading.
struct BoardSection {
    std::optional<std::string> title;
    std::vector<BoardRef> boards;

    bool operator==(const BoardSection&) const = default;
};

/// What the application says to the page: JavaScript source that dispatches events, routes the page and describes the
/// application. BridgeMessage is the other direction.
struct NativeBridge {
    /// The page posts with `window.webkit.messageHandlers.parvela.postMessage(object)`.
    static constexpr std::string_view handlerName = "parvela";
    /// Type of the CustomEvent that the page listens for on `window`.
    static constexpr std::string_view eventName = "parvela-native";

    enum class Platform { ios, macos };

    struct StopTimer {
        std::string taskKey;
    };
    struct Navigate {
        std::string path;  ///< path and query within the web app
    };
    struct Fullscreen {
        bool on = false;
    };
    struct Titlebar {
        bool inset = false;                  ///< the page must leave room for the window buttons
        std::optional<double> buttonsRight;  ///< where they end, in CSS pixels from the left
    };
    struct RequestLink {};
    struct NewTask {};
    struct ToggleSidebar {};
    using Event = std::variant<StopTimer, Navigate, Fullscreen, Titlebar, RequestLink, NewTask, ToggleSidebar>;

    /// Dispatches the event; the outcome is not known.
    static std::string script(const Event& event);
    /// Dispatches the event; the script's value is true when the page took it by setting `detail.handled`.
    static std::string handledScript(const Event& event);
    /// Routes the page to a path (and query) without loading it anew.
    static std::string navigateScript(std::string_view path);

    /// What a page can learn about the application.
    struct Info {
        Platform platform = Platform::macos;
        std::string deviceId;
        std::string deviceName;  ///< "Mac" stands for an empty one
        std::optional<std::string> linkedWorkspaceId;
        bool embedded = false;  ///< the page is part of a native screen, without its own frame
    };
    /// Defines the frozen `window.ParvelaNative` and marks the root element; to be run before the page's own scripts.
    static std::string nativeInfoScript(const Info& info);

    /// What the browser engine appends to its user agent.
    static std::string userAgentSuffix(Platform platform);

    /// Consecutive boards of the same section together. One group without a title when there is only one section.
    static std::vector<BoardSection> sections(const std::vector<BoardRef>& boards);
};

}  // namespace parvela
