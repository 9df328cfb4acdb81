#include "JsonText.h"

#include <ParvelaKit/NativeBridge.h>

#include <cmath>

#include <fmt/format.h>

namespace parvela {

namespace {

struct Payload {
    nlohmann::json operator()(const NativeBridge::StopTimer& event) const {
        return {{"type", "stopTimer"}, {"taskKey", event.taskKey}};
    }
    nlohmann::json operator()(const NativeBridge::Navigate& event) const {
        return {{"type", "navigate"}, {"path", event.path}};
    }
    nlohmann::json operator()(const NativeBridge::Fullscreen& event) const {
        return {{"type", "fullscreen"}, {"on", event.on}};
    }
    nlohmann::json operator()(const NativeBridge::Titlebar& event) const {
        nlohmann::json payload = {{"type", "titlebar"}, {"inset", event.inset}};
        if (event.buttonsRight) {
            const double rounded = std::round(*event.buttonsRight * 10) / 10;
            if (std::isfinite(rounded)) payload["buttonsRight"] = rounded;
        }
        return payload;
    }
    nlohmann::json operator()(NativeBridge::RequestLink) const { return {{"type", "requestLink"}}; }
    nlohmann::json operator()(NativeBridge::NewTask) const { return {{"type", "newTask"}}; }
    nlohmann::json operator()(NativeBridge::ToggleSidebar) const { return {{"type", "toggleSidebar"}}; }
};

std::string payloadOf(const NativeBridge::Event& event) {
    return jsonText::write(std::visit(Payload{}, event));
}

}  // namespace

std::string NativeBridge::script(const Event& event) {
    return fmt::format("window.dispatchEvent(new CustomEvent(\"{}\", {{ detail: {} }}));", eventName, payloadOf(event));
}

std::string NativeBridge::handledScript(const Event& event) {
    return fmt::format(
        "(function(){{var d={};window.dispatchEvent(new CustomEvent(\"{}\",{{detail:d}}));return "
        "d.handled===true;}})()",
        payloadOf(event), eventName);
}

std::string NativeBridge::navigateScript(std::string_view path) {
    // As the element of an array the path is a JavaScript string literal with everything escaped.
    const std::string literal = jsonText::write(nlohmann::json::array({std::string(path)}));
    return fmt::format(
        "(function(p){{if(location.pathname+location.search!==p){{history.pushState(null,'',p);}}"
        "window.dispatchEvent(new PopStateEvent('popstate'));}})({}[0]);",
        literal);
}

std::string NativeBridge::nativeInfoScript(const Info& info) {
    const nlohmann::json description = {
        {"deviceId", info.deviceId},
        {"deviceName", info.deviceName.empty() ? "Mac" : info.deviceName},
        {"features", nlohmann::json::array({"oauth"})},
        {"linkedWorkspaceId", info.linkedWorkspaceId ? nlohmann::json(*info.linkedWorkspaceId) : nlohmann::json()},
        {"platform", info.platform == Platform::macos ? "macos" : "ios"},
        {"version", "1.0"},  // of the bridge, not of the application
    };
    std::string script = fmt::format("window.ParvelaNative = Object.freeze({});", jsonText::write(description));
    if (info.embedded) script += "document.documentElement.setAttribute(\"data-native-embed\", \"\");";
    if (info.platform == Platform::macos) script += "document.documentElement.setAttribute(\"data-shell\", \"mac\");";
    return script;
}

std::string NativeBridge::userAgentSuffix(Platform platform) {
    return fmt::format("ParvelaApp/1.0 ({})", platform == Platform::macos ? "macOS" : "iOS");
}

std::vector<BoardSection> NativeBridge::sections(const std::vector<BoardRef>& boards) {
    std::vector<BoardSection> groups;
    for (const BoardRef& board : boards) {
        if (groups.empty() || groups.back().title != board.section) groups.push_back({board.section, {}});
        groups.back().boards.push_back(board);
    }
    if (groups.size() == 1) groups.front().title.reset();
    return groups;
}

}  // namespace parvela
