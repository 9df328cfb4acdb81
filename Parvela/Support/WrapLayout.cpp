#include "Support/WrapLayout.h"

#include <algorithm>

namespace parvela {

namespace {

/// Before the box was ever laid out.
constexpr int usualWidth = 340;
constexpr const char* spacingKey = "parvela-wrap-spacing";

int spacingOf(GtkWidget* box) {
    return GPOINTER_TO_INT(g_object_get_data(G_OBJECT(box), spacingKey));
}

/// Goes through the children as they stand in rows of `width`; returns the height of all rows.
template <class Place>
int walk(GtkWidget* box, int width, Place place) {
    const int spacing = spacingOf(box);
    int x = 0;
    int y = 0;
    int rowHeight = 0;
    for (GtkWidget* child = gtk_widget_get_first_child(box); child; child = gtk_widget_get_next_sibling(child)) {
        if (!gtk_widget_should_layout(child)) continue;
        int minimum = 0;
        int natural = 0;
        int height = 0;
        gtk_widget_measure(child, GTK_ORIENTATION_HORIZONTAL, -1, &minimum, &natural, nullptr, nullptr);
        const int childWidth = std::max(minimum, std::min(natural, width));
        gtk_widget_measure(child, GTK_ORIENTATION_VERTICAL, childWidth, nullptr, &height, nullptr, nullptr);
        if (x > 0 && x + childWidth > width) {
            x = 0;
            y += rowHeight + spacing;
            rowHeight = 0;
        }
        place(child, GtkAllocation{x, y, childWidth, height});
        x += childWidth + spacing;
        rowHeight = std::max(rowHeight, height);
    }
    return y + rowHeight;
}

GtkSizeRequestMode requestMode(GtkWidget*) {
    return GTK_SIZE_REQUEST_HEIGHT_FOR_WIDTH;
}

void measure(GtkWidget* box, GtkOrientation orientation, int forSize, int* minimum, int* natural, int*, int*) {
    if (orientation == GTK_ORIENTATION_VERTICAL) {
        // Scrolled windows ask without a width.
        const int known = gtk_widget_get_width(box) > 0 ? gtk_widget_get_width(box) : usualWidth;
        const int width = forSize < 0 ? known : forSize;
        *minimum = *natural = walk(box, width, [](GtkWidget*, const GtkAllocation&) {});
        return;
    }
    int widest = 0;
    int sum = 0;
    for (GtkWidget* child = gtk_widget_get_first_child(box); child; child = gtk_widget_get_next_sibling(child)) {
        if (!gtk_widget_should_layout(child)) continue;
        int childMinimum = 0;
        int childNatural = 0;
        gtk_widget_measure(child, GTK_ORIENTATION_HORIZONTAL, -1, &childMinimum, &childNatural, nullptr, nullptr);
        widest = std::max(widest, childMinimum);
        sum += childNatural + spacingOf(box);
    }
    *minimum = widest;
    *natural = std::max(widest, sum);
}

void allocate(GtkWidget* box, int width, int, int) {
    const bool isMirrored = gtk_widget_get_direction(box) == GTK_TEXT_DIR_RTL;
    walk(box, width, [&](GtkWidget* child, GtkAllocation area) {
        if (isMirrored) area.x = width - area.x - area.width;
        gtk_widget_size_allocate(child, &area, -1);
    });
}

}  // namespace

void useWrapLayout(GtkWidget* box, int spacing) {
    g_object_set_data(G_OBJECT(box), spacingKey, GINT_TO_POINTER(spacing));
    gtk_widget_set_layout_manager(box, gtk_custom_layout_new(requestMode, measure, allocate));
}

}  // namespace parvela
