#include "Windows/WindowButtons.h"

#include <algorithm>

namespace parvela {

namespace {

constexpr int controlCount = 3;

int naturalSize(GtkWidget* widget, GtkOrientation orientation) {
    int natural = 0;
    gtk_widget_measure(widget, orientation, -1, nullptr, &natural, nullptr, nullptr);
    return natural;
}

}  // namespace

WindowButtons::WindowButtons(GtkWidget* cluster, GtkWidget* controls) : cluster_(cluster), controls_(controls) {
    // The page is told a distance from its left edge, in every language.
    gtk_widget_set_direction(cluster_, GTK_TEXT_DIR_LTR);
    gtk_widget_set_direction(controls_, GTK_TEXT_DIR_LTR);
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

TitlebarLayout WindowButtons::layout() const {
    GtkWidget* const first = gtk_widget_get_first_child(controls_);
    const double controls = naturalSize(controls_, GTK_ORIENTATION_HORIZONTAL);
    const double width = first ? naturalSize(first, GTK_ORIENTATION_HORIZONTAL) : controls / controlCount;
    const TitlebarLayout::Buttons buttons{
        .width = width,
        .height = static_cast<double>(naturalSize(controls_, GTK_ORIENTATION_VERTICAL)),
        .gap = std::max(0.0, (controls - width * controlCount) / (controlCount - 1)),
        .count = controlCount + 1,  // the menu follows in the same rhythm
    };
    return TitlebarLayout::make(buttons, scale_, gtk_widget_get_width(gtk_widget_get_parent(cluster_)));
}

void WindowButtons::place() {
    const TitlebarLayout place = layout();
    gtk_widget_set_margin_start(cluster_, static_cast<int>(place.buttonX.front()));
    gtk_widget_set_margin_top(cluster_, static_cast<int>(place.buttonY));
}

std::optional<double> WindowButtons::right() const {
    return applied_ ? std::optional(layout().buttonsRight) : std::nullopt;
}

}  // namespace parvela
