#pragma once

#include <ParvelaKit/TitlebarLayout.h>

#include <optional>

#include <gtk/gtk.h>

namespace parvela {

/// The window's own buttons (close, minimise, zoom, then the main menu) in the header band of a page that draws under
/// them.
class WindowButtons {
public:
    /// `cluster` holds `controls`, the three buttons of the toolkit, and the main menu's; it floats over the page. The
    /// window owns all.
    WindowButtons(GtkWidget* cluster, GtkWidget* controls);

    /// Shows the buttons where a page at this zoom leaves room for them.
    void apply(double scale);
    /// Hides them: the title bar has its own.
    void restore();
    bool applied() const noexcept { return applied_; }

    /// Where the buttons end, in CSS pixels from the page's left edge; none while they are hidden.
    std::optional<double> right() const;

private:
    TitlebarLayout layout() const;
    void place();

    GtkWidget* cluster_;
    GtkWidget* controls_;
    double scale_ = 1;
    bool applied_ = false;
};

}  // namespace parvela
