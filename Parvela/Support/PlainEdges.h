#pragma once

#include <ParvelaKit/GLibPtr.h>

#include <gtk/gtk.h>

namespace parvela {

/// Takes shadows and round corners from menus and tooltips while the display has no compositor (remote desktops often
/// have none): what should be seen through would be black there.
class PlainEdges {
public:
    explicit PlainEdges(GdkDisplay* display);
    PlainEdges(const PlainEdges&) = delete;
    PlainEdges& operator=(const PlainEdges&) = delete;
    ~PlainEdges();

private:
    void update();

    Ref<GdkDisplay> display_;
    Ref<GtkCssProvider> style_;
    Connection compositedChanged_;
};

}  // namespace parvela
