#pragma once

#include <ParvelaKit/GLibPtr.h>

#include <gtk/gtk.h>

namespace parvela {

/// Keeps screen readers from ending the program: GTK 4.8 answers a question about a window that has just gone with the
/// last window of its list, and cannot when that one is hidden. So the last one is always a window of ours that is
/// never shown, and still has what the answer needs.
class AccessibleWindows {
public:
    AccessibleWindows();
    AccessibleWindows(const AccessibleWindows&) = delete;
    AccessibleWindows& operator=(const AccessibleWindows&) = delete;
    ~AccessibleWindows();

private:
    void standLastSoon();
    void standLast();

    GListModel* windows_;
    GtkWindow* last_;
    guint soon_ = 0;
    Connection changed_;
};

}  // namespace parvela
