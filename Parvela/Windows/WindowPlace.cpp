#include "Windows/WindowPlace.h"

#include <cmath>
#include <utility>

namespace parvela {

void WindowPlace::set(const WindowFrame& frame) {
    const WindowFrame fitted = frame.onMonitors(monitorAreas(gtk_widget_get_display(GTK_WIDGET(window_))));
    gtk_window_set_default_size(window_, static_cast<int>(fitted.width), static_cast<int>(fitted.height));
    position_ = WindowPosition{fitted.x, fitted.y};
    moveWindow(window_, *position_);
}

std::string WindowPlace::text() const {
    if (const auto position = windowPosition(window_)) position_ = position;
    int width = 0;
    int height = 0;
    gtk_window_get_default_size(window_, &width, &height);
    const WindowPosition corner = position_.value_or(WindowPosition{0, 0});
    return WindowFrame{corner.x, corner.y, static_cast<double>(width), static_cast<double>(height)}.text();
}

std::optional<WindowFrame> WindowPlace::beside(Beside what) const {
    constexpr double step = 32;
    // Where a tab stands in a window, so that a torn one stays under the pointer.
    constexpr double toTabX = 120;
    constexpr double toTabY = 60;
    auto frame = WindowFrame::parse(text());
    if (!frame) return std::nullopt;
    const auto pointer = what == Beside::pointer ? pointerPosition(window_) : std::nullopt;
    frame->x = pointer ? pointer->x - toTabX : frame->x + step;
    frame->y = pointer ? pointer->y - toTabY : frame->y + step;
    const auto area = monitorAreaOf(window_);
    return area ? frame->inside(*area) : *frame;
}

void WindowPlace::toggleMaximized() {
    if (gtk_window_is_maximized(window_)) {
        gtk_window_unmaximize(window_);
    } else {
        gtk_window_maximize(window_);
    }
}

void WindowPlace::toggleFill() {
    const auto area = monitorAreaOf(window_);
    if (!area) return;
    if (!windowPosition(window_)) {
        // The desktop places windows itself.
        toggleMaximized();
        return;
    }
    const auto now = WindowFrame::parse(text());
    const bool filled = now && std::abs(now->width - area->width) < 16 && std::abs(now->height - area->height) < 16;
    WindowFrame target = *area;
    if (filled && frameBeforeFill_) {
        target = *std::exchange(frameBeforeFill_, std::nullopt);
    } else {
        frameBeforeFill_ = now;
        const WindowShadow shadow = shadowOf(window_);
        target.x -= shadow.left;
        target.y -= shadow.top;
    }
    moveAndResizeWindow(window_, target);
}

}  // namespace parvela
