#pragma once

#include <optional>

#include <gtk/gtk.h>

namespace parvela {

/// The window's own buttons (close, minimise, zoom, then the main menu) in the header band of a page that draws under
/// them.
class WindowButtons {
public:
    /// `cluster` holds the buttons and floats over the page; its window owns it.
    explicit WindowButtons(GtkWidget* cluster);

    /// Shows the buttons where a page at this zoom leaves room for them.
    void apply(double scale);
    /// Hides them: the title bar has its own.
    void restore();
    bool applied() const noexcept { return applied_; }

    double scale() const noexcept { return scale_; }
    void setScale(double scale);

    /// Where the buttons end, in CSS pixels from the page's left edge; none while they are hidden.
    std::optional<double> right() const;

private:
    void place();

    GtkWidget* cluster_;
    double scale_ = 1;
    bool applied_ = false;
};

}  // namespace parvela
