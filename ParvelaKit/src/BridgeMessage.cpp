#include "JsonText.h"

#include <ParvelaKit/BridgeMessage.h>
#include <ParvelaKit/ServerConfig.h>
#include <ParvelaKit/Text.h>
#include <ParvelaKit/TokenFormat.h>

#include <algorithm>
#include <cmath>
#include <string>

#include <nlohmann/json.hpp>

namespace parvela {

namespace {

using Json = nlohmann::json;

constexpr std::size_t maximumBoards = 500;

/// A trimmed, non-empty string entry.
std::optional<std::string> text(const Json& object, std::string_view name) {
    const auto entry = jsonText::string(object, name);
    if (!entry) return std::nullopt;
    const std::string_view content = trimmed(*entry);
    return content.empty() ? std::nullopt : std::optional<std::string>(content);
}

std::optional<double> number(const Json& object, std::string_view name) {
    const auto entry = object.find(name);
    if (entry == object.end() || !entry->is_number()) return std::nullopt;
    const double value = entry->get<double>();
    return std::isfinite(value) ? std::optional(value) : std::nullopt;
}

/// Truncated toward zero; none beyond 64 bits.
std::optional<std::int64_t> whole(double value) {
    constexpr double limit = 9223372036854775808.0;  // 2^63
    if (value < -limit || value >= limit) return std::nullopt;
    return static_cast<std::int64_t>(value);
}

std::optional<std::string> colorHex(const Json& board) {
    const auto color = jsonText::string(board, "color");
    if (!color || color->size() != 7 || color->front() != '#') return std::nullopt;
    std::string upper = *color;
    for (char& c : upper) {
        if (c >= 'a' && c <= 'f') c = static_cast<char>(c - 'a' + 'A');
    }
    const bool isHex = upper.find_first_not_of("0123456789ABCDEF", 1) == std::string::npos;
    return isHex ? std::optional(std::move(upper)) : std::nullopt;
}

std::optional<BoardRef> parseBoard(const Json& element) {
    const auto id = jsonText::string(element, "id");
    const auto name = text(element, "name");
    if (!id || id->empty() || !name) return std::nullopt;

    auto section = text(element, "section");
    if (section) *section = firstCharacters(std::string(*section), 100);
    return BoardRef{*id, std::string(firstCharacters(*name, 200)), colorHex(element), std::move(section)};
}

std::optional<BridgeMessage> parseLink(const Json& body) {
    auto token = text(body, "token");
    if (!token || !TokenFormat::isValid(*token)) return std::nullopt;
    const auto base = text(body, "apiBase");
    auto apiBase = base ? Url::parse(*base) : std::nullopt;
    if (!apiBase || !ServerConfig::allowsToken(*apiBase)) return std::nullopt;
    auto workspaceId = text(body, "workspaceId");
    if (!workspaceId) return std::nullopt;
    return BridgeMessage{BridgeMessage::Link{std::move(*token), std::move(*apiBase), std::move(*workspaceId),
                                             text(body, "workspaceName"), text(body, "userName")}};
}

std::optional<BridgeMessage> parseTimer(const Json& body, Instant now) {
    const auto state = text(body, "state");
    auto key = text(body, "taskKey");
    if (state == "stopped") return BridgeMessage{BridgeMessage::TimerStopped{std::move(key)}};
    if (state != "started" || !key) return std::nullopt;

    const auto milliseconds = number(body, "startedAt");
    const auto startedAt = milliseconds ? jsonText::instantFrom(*milliseconds) : now;
    if (!startedAt) return std::nullopt;
    auto title = text(body, "taskTitle").value_or(*key);
    return BridgeMessage{BridgeMessage::TimerStarted{{*key, std::move(title), text(body, "boardName"), *startedAt}}};
}

std::optional<BridgeMessage> parseBadge(const Json& body) {
    const auto value = number(body, "count");
    const auto count = value ? whole(*value) : std::nullopt;
    if (!count) return std::nullopt;
    return BridgeMessage{BridgeMessage::Badge{std::max<std::int64_t>(*count, 0)}};
}

std::optional<BridgeMessage> parseBoards(const Json& body) {
    const auto list = body.find("boards");
    if (list == body.end() || !list->is_array()) return std::nullopt;
    if (!std::ranges::all_of(*list, [](const Json& element) { return element.is_object(); })) return std::nullopt;

    BridgeMessage::Boards message{text(body, "workspaceId"), {}};
    for (std::size_t i = 0; i < std::min(list->size(), maximumBoards); ++i) {
        if (auto board = parseBoard((*list)[i])) message.boards.push_back(std::move(*board));
    }
    return BridgeMessage{std::move(message)};
}

std::optional<BridgeMessage> parseShell(const Json& body) {
    const auto value = number(body, "version");
    if (!value) return BridgeMessage{BridgeMessage::Shell{std::nullopt}};
    const auto version = whole(*value);
    return version ? std::optional(BridgeMessage{BridgeMessage::Shell{version}}) : std::nullopt;
}

}  // namespace

std::optional<BridgeMessage> BridgeMessage::parse(const Json& body, Instant now) {
    if (!body.is_object()) return std::nullopt;
    const auto type = jsonText::string(body, "type");
    if (!type) return std::nullopt;
    if (*type == "link") return parseLink(body);
    if (*type == "unlinked") return BridgeMessage{Unlinked{}};
    if (*type == "timer") return parseTimer(body, now);
    if (*type == "badge") return parseBadge(body);
    if (*type == "boards") return parseBoards(body);
    if (*type == "shell") return parseShell(body);
    if (*type == "windowDrag") return BridgeMessage{WindowDrag{}};
    if (*type == "titlebarDoubleClick") return BridgeMessage{TitlebarDoubleClick{}};
    return std::nullopt;
}

std::optional<BridgeMessage> BridgeMessage::parseText(std::string_view json, Instant now) {
    if (json.size() > maximumTextSize) return std::nullopt;
    const auto body = jsonText::read(jsonText::withoutUnpairedSurrogates(json));
    return body ? parse(*body, now) : std::nullopt;
}

}  // namespace parvela
