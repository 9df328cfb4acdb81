#include "QuickAdd/PopoverWindow.h"

#include "QuickAdd/PopoverPlacement.h"

#include <chrono>

#include <gdk/x11/gdkx.h>

namespace parvela {

namespace {

constexpr double width = 380;
constexpr double height = 520;

/// A key grab takes the keyboard for less than that and gives it back.
constexpr std::chrono::milliseconds focusPatience{150};
/// The keyboard belongs to no window for that many looks: the user clicked on the bare desktop.
constexpr int patientLooks = 4;

}  // namespace

PopoverWindow::PopoverWindow(GtkWindow* window) : window_(window) {
    connections_.push_back(connect<void(GtkWindow*, GParamSpec*)>(
        window_, "notify::is-active", [this](GtkWindow*, GParamSpec*) { activeChanged(); }));
    connections_.push_back(connect<void(GtkWidget*)>(window_, "hide", [this](GtkWidget*) { didHide(); }));
    addKeys();
}

void PopoverWindow::prepare() {
    becomeUtility(window_);
    if (GDK_IS_X11_DISPLAY(gtk_widget_get_display(GTK_WIDGET(window_)))) desktopClicks_ = X11DesktopClicks::open();
    if (gdk_display_is_composited(gtk_widget_get_display(GTK_WIDGET(window_)))) {
        gtk_widget_add_css_class(GTK_WIDGET(window_), "composited");
    }
}

void PopoverWindow::addKeys() {
    GtkEventController* const keys = gtk_event_controller_key_new();
    connections_.push_back(connect<gboolean(GtkEventControllerKey*, guint, guint, GdkModifierType)>(
        keys, "key-pressed", [this](GtkEventControllerKey*, guint key, guint, GdkModifierType) -> gboolean {
            if (key == GDK_KEY_Escape && onEscape) {
                onEscape();
                return TRUE;
            }
            if (key == GDK_KEY_F5 && onRefresh) {
                onRefresh();
                return TRUE;
            }
            return FALSE;
        }));
    gtk_widget_add_controller(GTK_WIDGET(window_), keys);
}

bool PopoverWindow::isShown() const {
    return gtk_widget_get_visible(GTK_WIDGET(window_));
}

void PopoverWindow::present(std::optional<PopoverAnchor> anchor, const std::optional<std::string>& token) {
    if (anchor) anchor_ = anchor;
    if (!isShown()) {
        before_ = activeWindow(gtk_widget_get_display(GTK_WIDGET(window_)));
        gtk_window_set_default_size(window_, static_cast<int>(width), static_cast<int>(height));
    }
    place();
    presentForUser(window_, token);
    // Window managers place a window anew whenever it is mapped.
    place();
    if (desktopClicks_) desktopClicks_->start([this] { dismiss(); });
}

void PopoverWindow::place() {
    GdkDisplay* const display = gtk_widget_get_display(GTK_WIDGET(window_));
    const auto frames = monitorFrames(display);
    const auto areas = monitorAreas(display);
    std::vector<PopoverMonitor> monitors;
    for (std::size_t i = 0; i < areas.size(); ++i) monitors.push_back({frames[i], areas[i]});
    if (monitors.empty()) return;
    const double scale = scaleOf(window_);
    PopoverPoint point{areas.front().x, areas.front().y};
    if (anchor_) {
        point = {anchor_->x / scale, anchor_->y / scale};
    } else if (const auto pointer = pointerPosition(display)) {
        point = {pointer->x / scale, pointer->y / scale};
    }
    const auto place =
        anchor_ ? placeBeside(point, width, height, monitors) : placeInView(point, width, height, monitors);
    moveWindow(window_, {place.x, place.y});
}

void PopoverWindow::close(Focus focus) {
    if (!isShown()) return;
    const KeyboardPlace now = keyboardPlace(window_);
    if (focus == Focus::giveBack && before_ && (now == KeyboardPlace::here || now == KeyboardPlace::nowhere)) {
        activate(gtk_widget_get_display(GTK_WIDGET(window_)), *before_);
    }
    gtk_widget_set_visible(GTK_WIDGET(window_), FALSE);
}

void PopoverWindow::didHide() {
    if (desktopClicks_) desktopClicks_->stop();
    focusLoss_.reset();
    before_.reset();
    if (onClosed) onClosed();
}

void PopoverWindow::activeChanged() {
    focusLoss_.reset();
    looksWithoutFocus_ = 0;
    if (!isShown() || gtk_window_is_active(window_)) return;
    focusLoss_ = MainLoopTimer(focusPatience, [this] { lookForFocus(); }, MainLoopTimer::Kind::repeating);
}

/// The toolkit says "not active" for a grab too; only the display knows where the keyboard belongs.
void PopoverWindow::lookForFocus() {
    switch (keyboardPlace(window_)) {
        case KeyboardPlace::here:
            looksWithoutFocus_ = 0;
            return;
        case KeyboardPlace::nowhere:
            if (++looksWithoutFocus_ < patientLooks) return;
            break;
        case KeyboardPlace::elsewhere:
        case KeyboardPlace::unknown:
            break;
    }
    dismiss();
}

void PopoverWindow::dismiss() {
    if (!isShown()) return;
    close(Focus::leave);
    if (onDismissed) onDismissed();
}

}  // namespace parvela
