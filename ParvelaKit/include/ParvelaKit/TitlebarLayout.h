#pragma once

#include <optional>
#include <string_view>
#include <vector>

namespace parvela {

/// Where the window's buttons stand in the header band of a page that draws under them. Lengths are in points of the
/// window, with the origin at its top left corner.
struct TitlebarLayout {
    /// The buttons as the toolkit makes them.
    struct Buttons {
        double width = 0;
        double height = 0;
        double gap = 0;  ///< between two neighbours
        int count = 3;
    };

    double bandWidth = 0;
    double bandHeight = 0;
    std::vector<double> buttonX;  ///< left edges
    double buttonY = 0;           ///< their common top edge
    /// Where the last button ends, in CSS pixels of the page.
    double buttonsRight = 0;

    /// `scale` is the page's zoom.
    static TitlebarLayout make(const Buttons& buttons, double scale, double titlebarWidth);
    /// Height of the strip at the top of the page where the click that activates the window reaches the page as well.
    static double firstMouseBand(double scale);
};

/// What a double click on a title bar does.
enum class TitlebarAction { zoom, fill, minimize, none };

/// The user's choice: `action` ("Maximize", "Fill", "Minimize" or "None") when it is one of these words, else
/// `minimizes`, else the desktop's own setting as GTK names it ("toggle-maximize", "minimize" or "none"; others zoom).
TitlebarAction titlebarDoubleClick(std::optional<std::string_view> action, std::optional<bool> minimizes,
                                   std::string_view desktopSetting);

}  // namespace parvela
