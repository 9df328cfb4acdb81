#include "Windows/WindowButtons.h"

#include <algorithm>
#include <cmath>

namespace parvela {

namespace {

/// The web app's header at zoom 1: its height, and the room it leaves before the first button.
constexpr double bandHeight = 76;
constexpr double bandInset = 26;

int naturalSize(GtkWidget* widget, GtkOrientation orientation) {
    int natural = 0;
    gtk_widget_measure(widget, orientation, -1, nullptr, &natural, nullptr, nullptr);
    return natural;
}

}  // namespace

WindowButtons::WindowButtons(GtkWidget* cluster) : cluster_(cluster) {
    // The page is told a distance from its left edge, in every language.
    gtk_widget_set_direction(cluster_, GTK_TEXT_DIR_LTR);
}

void WindowButtons::apply(double scale) {
    scale_ = scale;
    applied_ = true;
    gtk_widget_set_visible(cluster_, TRUE);
    place();
}

void WindowButtons::restore() {
    applied_ = false;
    gtk_widget_set_visible(cluster_, FALSE);
}

void WindowButtons::setScale(double scale) {
    scale_ = scale;
    if (applied_) place();
}

void WindowButtons::place() {
    gtk_widget_set_margin_start(cluster_, 0);
    gtk_widget_set_margin_top(cluster_, 0);
    const int height = naturalSize(cluster_, GTK_ORIENTATION_VERTICAL);
    const double band = std::max(std::round(bandHeight * scale_), static_cast<double>(height + 4));
    gtk_widget_set_margin_start(cluster_, static_cast<int>(std::round(bandInset * scale_)));
    gtk_widget_set_margin_top(cluster_, static_cast<int>(std::round((band - height) / 2)));
}

std::optional<double> WindowButtons::right() const {
    if (!applied_) return std::nullopt;
    // The natural width counts the margin.
    return naturalSize(cluster_, GTK_ORIENTATION_HORIZONTAL) / std::max(scale_, 0.1);
}

}  // namespace parvela
