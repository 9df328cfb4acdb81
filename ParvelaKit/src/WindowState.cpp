#include "JsonText.h"

#include <ParvelaKit/Text.h>
#include <ParvelaKit/WindowState.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include <fmt/format.h>

namespace parvela {

namespace {

/// The numbers of `text`, with any of `separators` between them; none unless all is numbers.
std::optional<std::vector<double>> numbers(std::string_view text, std::string_view separators) {
    std::vector<double> values;
    while (true) {
        text.remove_prefix(std::min(text.find_first_not_of(separators), text.size()));
        if (text.empty()) return values;
        double value = 0;
        const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (failure != std::errc() || !std::isfinite(value)) return std::nullopt;
        values.push_back(value);
        text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    }
}

std::optional<WindowFrame> frameOf(std::span<const double> values) {
    if (values.size() < 4 || values[2] <= 0 || values[3] <= 0) return std::nullopt;
    return WindowFrame{values[0], values[1], values[2], values[3]};
}

/// Length of the part of [a, a + aLength] that [b, b + bLength] covers.
double overlap(double a, double aLength, double b, double bLength) {
    return std::max(0.0, std::min(a + aLength, b + bLength) - std::max(a, b));
}

/// How far apart two stretches are.
double distance(double a, double aLength, double b, double bLength) {
    return std::max({0.0, a - (b + bLength), b - (a + aLength)});
}

std::optional<WindowState::Group> groupFrom(const nlohmann::json& entry) {
    const auto frame = jsonText::string(entry, "frame");
    const auto tabs = entry.find("tabs");
    const auto selected = entry.find("selected");
    const auto miniaturized = entry.find("miniaturized");
    const auto maximized = entry.find("maximized");  // earlier versions do not write it
    if (!entry.is_object() || !frame || tabs == entry.end() || !tabs->is_array() || selected == entry.end() ||
        !selected->is_number_integer() || miniaturized == entry.end() || !miniaturized->is_boolean() ||
        (maximized != entry.end() && !maximized->is_boolean())) {
        return std::nullopt;
    }
    WindowState::Group group{*frame,
                             {},
                             selected->get<std::int64_t>(),
                             miniaturized->get<bool>(),
                             maximized != entry.end() && maximized->get<bool>()};
    for (const auto& tab : *tabs) {
        if (!tab.is_string()) return std::nullopt;
        group.tabs.push_back(tab.get<std::string>());
    }
    return group;
}

bool mayBeReopened(const std::string& tab, const ServerConfig& server) {
    const auto url = Url::parseFromEngine(tab);
    return url && url->lowercaseScheme().starts_with("http") && server.isInApp(*url);
}

}  // namespace

std::string WindowFrame::text() const {
    return fmt::format("{{{{{}, {}}}, {{{}, {}}}}}", x, y, width, height);
}

std::optional<WindowFrame> WindowFrame::parse(std::string_view text) {
    text = trimmed(text);
    if (!text.starts_with("{{") || !text.ends_with("}}")) return std::nullopt;
    const auto values = numbers(text, "{}, ");
    return values && values->size() == 4 ? frameOf(*values) : std::nullopt;
}

WindowFrame WindowFrame::onMonitors(std::span<const WindowFrame> monitors) const {
    if (monitors.empty()) return *this;
    const WindowFrame* best = &monitors.front();
    double bestOverlap = 0, bestDistance = std::numeric_limits<double>::infinity();
    for (const WindowFrame& monitor : monitors) {
        const double shared =
            overlap(x, width, monitor.x, monitor.width) * overlap(y, height, monitor.y, monitor.height);
        const double apart =
            std::hypot(distance(x, width, monitor.x, monitor.width), distance(y, height, monitor.y, monitor.height));
        if (shared > bestOverlap || (shared == bestOverlap && apart < bestDistance)) {
            best = &monitor;
            bestOverlap = shared;
            bestDistance = apart;
        }
    }

    WindowFrame fitted = *this;
    fitted.width = std::min(std::max(width, minimumWidth), std::max(best->width, minimumWidth));
    fitted.height = std::min(std::max(height, minimumHeight), std::max(best->height, minimumHeight));
    // The user moves a window by its top edge, so enough of it must be within reach.
    constexpr double graspWidth = 100, graspHeight = 40;
    const bool reachable = std::ranges::any_of(monitors, [&fitted](const WindowFrame& monitor) {
        return overlap(fitted.x, fitted.width, monitor.x, monitor.width) >= graspWidth &&
               overlap(fitted.y, graspHeight, monitor.y, monitor.height) >= graspHeight;
    });
    return reachable ? fitted : fitted.inside(*best);
}

WindowFrame WindowFrame::inside(const WindowFrame& area) const {
    WindowFrame moved = *this;
    moved.x = std::clamp(x, area.x, std::max(area.x, area.x + area.width - width));
    moved.y = std::clamp(y, area.y, std::max(area.y, area.y + area.height - height));
    return moved;
}

std::optional<WindowFrame> newWindowFrame(const Preferences& preferences) {
    if (const auto text = preferences.lastWindowFrame()) {
        if (const auto frame = WindowFrame::parse(*text)) return frame;
    }
    const auto earlier = preferences.earlierWindowFrame();
    if (!earlier) return std::nullopt;
    // A frame and the screen it was on: eight numbers.
    const auto values = numbers(*earlier, " ");
    return values ? frameOf(*values) : WindowFrame::parse(*earlier);
}

std::string WindowState::json() const {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const Group& group : groups) {
        nlohmann::ordered_json entry = {{"frame", group.frame},
                                        {"tabs", group.tabs},
                                        {"selected", group.selected},
                                        {"miniaturized", group.miniaturized}};
        if (group.maximized) entry["maximized"] = true;
        list.push_back(std::move(entry));
    }
    return jsonText::write(nlohmann::ordered_json{{"groups", std::move(list)}});
}

std::optional<WindowState> WindowState::fromJson(std::string_view json) {
    const auto object = jsonText::read(json);
    if (!object || !object->is_object()) return std::nullopt;
    const auto list = object->find("groups");
    if (list == object->end() || !list->is_array()) return std::nullopt;

    WindowState state;
    for (const auto& entry : *list) {
        auto group = groupFrom(entry);
        if (!group) return std::nullopt;
        state.groups.push_back(std::move(*group));
    }
    return state;
}

WindowState WindowState::restorable(const ServerConfig& server) const {
    WindowState state;
    std::size_t room = maximumTabs;
    for (const Group& group : groups) {
        if (group.tabs.empty() || room == 0) continue;
        Group kept = group;
        kept.tabs.clear();
        kept.selected = 0;
        for (std::size_t i = 0; i < group.tabs.size() && kept.tabs.size() < room; ++i) {
            if (!mayBeReopened(group.tabs[i], server)) continue;
            kept.tabs.push_back(group.tabs[i]);
            // The last tab up to the selected one takes its place when that is gone.
            if (static_cast<std::int64_t>(i) <= group.selected) kept.selected = std::ssize(kept.tabs) - 1;
        }
        if (kept.tabs.empty()) kept.tabs.push_back(server.appURL.text());
        room -= kept.tabs.size();
        state.groups.push_back(std::move(kept));
    }
    return state;
}

}  // namespace parvela
