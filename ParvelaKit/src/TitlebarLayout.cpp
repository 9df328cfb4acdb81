#include <ParvelaKit/TitlebarLayout.h>

#include <algorithm>
#include <cmath>

namespace parvela {

namespace {

// Of the web app's header, in CSS pixels: its height, and the room that it leaves before the buttons.
constexpr double headerHeight = 76;
constexpr double headerInset = 26;

}  // namespace

TitlebarLayout TitlebarLayout::make(const Buttons& buttons, double scale, double titlebarWidth) {
    const double inset = std::round(headerInset * scale);
    const double clusterWidth = buttons.gap * (buttons.count - 1) + buttons.width * buttons.count;

    TitlebarLayout layout{};
    layout.bandHeight = std::max(std::round(headerHeight * scale), buttons.height + 4);
    layout.bandWidth = std::min(titlebarWidth, clusterWidth + inset + 16);
    layout.buttonY = std::round((layout.bandHeight - buttons.height) / 2);
    for (int i = 0; i < buttons.count; ++i) layout.buttonX.push_back(inset + (buttons.width + buttons.gap) * i);
    layout.buttonsRight = (inset + clusterWidth) / std::max(scale, 0.1);
    return layout;
}

double TitlebarLayout::firstMouseBand(double scale) {
    return headerHeight * scale;
}

TitlebarAction titlebarDoubleClick(std::optional<std::string_view> action, std::optional<bool> minimizes,
                                   std::string_view desktopSetting) {
    if (action == "Maximize") return TitlebarAction::zoom;
    if (action == "Fill") return TitlebarAction::fill;
    if (action == "Minimize") return TitlebarAction::minimize;
    if (action == "None") return TitlebarAction::none;
    if (minimizes) return *minimizes ? TitlebarAction::minimize : TitlebarAction::zoom;
    if (desktopSetting == "minimize") return TitlebarAction::minimize;
    if (desktopSetting == "none") return TitlebarAction::none;
    return TitlebarAction::zoom;
}

}  // namespace parvela
