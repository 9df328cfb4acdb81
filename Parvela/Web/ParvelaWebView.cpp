#include "Web/ParvelaWebView.h"

#include "Web/KeyboardMenu.h"
#include "Web/WebEnvironment.h"

#include <Platform/MainLoop.h>

#include <memory>
#include <utility>

#include <adwaita.h>

namespace parvela {

namespace {

constexpr gint64 pressLifetime = 1500 * G_TIME_SPAN_MILLISECOND;
constexpr std::chrono::milliseconds answerPatience{2000};

struct PointerState {
    double x;
    double y;
    bool primaryHeld;
};

std::optional<PointerState> pointerOn(GdkSurface* surface) {
    GdkSeat* const seat = gdk_display_get_default_seat(gdk_surface_get_display(surface));
    GdkDevice* const pointer = seat ? gdk_seat_get_pointer(seat) : nullptr;
    double x = 0;
    double y = 0;
    GdkModifierType state{};
    if (!pointer || !gdk_surface_get_device_position(surface, pointer, &x, &y, &state)) return std::nullopt;
    return PointerState{x, y, (state & GDK_BUTTON1_MASK) != 0};
}

GdkSurface* surfaceOf(GtkWidget* widget) {
    GtkNative* const native = gtk_widget_get_native(widget);
    return native ? gtk_native_get_surface(native) : nullptr;
}

/// A handled query on its way: answered by the page or by the clock, whichever comes first.
struct Query {
    std::function<void()> otherwise;
    MainLoopTimer patience;

    void settle(bool handled) {
        patience.reset();
        if (auto action = std::exchange(otherwise, nullptr); action && !handled) action();
    }
};

}  // namespace

ParvelaWebView::ParvelaWebView(const WebEnvironment& environment, WebKitWebView* related)
    : view_(environment.makeView(related)) {
    gtk_widget_set_hexpand(widget(), TRUE);
    gtk_widget_set_vexpand(widget(), TRUE);

    // A view may be made before the style sheets are read.
    realized_ = connect<void(GtkWidget*)>(widget(), "realize", [this](GtkWidget*) { followScheme(); });
    watchPointer();
    watchKeys();
}

void ParvelaWebView::followScheme() {
    showBackground();
    // The style sheet follows the change of scheme within the same turn of the loop.
    schemeChanged_ = connect<void(AdwStyleManager*, GParamSpec*)>(
        adw_style_manager_get_default(), "notify::dark", [this](AdwStyleManager*, GParamSpec*) {
            recolour_ = MainLoopTimer(std::chrono::milliseconds{0}, [this] { showBackground(); });
        });
}

void ParvelaWebView::watchPointer() {
    GtkGesture* const press = gtk_gesture_click_new();
    gtk_gesture_single_set_button(GTK_GESTURE_SINGLE(press), GDK_BUTTON_PRIMARY);
    gtk_event_controller_set_propagation_phase(GTK_EVENT_CONTROLLER(press), GTK_PHASE_CAPTURE);
    pressed_ = connect<void(GtkGestureClick*, int, double, double)>(
        press, "pressed", [this](GtkGestureClick*, int clicks, double x, double y) {
            dragWanted_ = false;
            lastMouseDown_ = MouseDown{g_get_monotonic_time(), clicks, x, y};
        });
    gtk_widget_add_controller(widget(), GTK_EVENT_CONTROLLER(press));

    GtkEventController* const motion = gtk_event_controller_motion_new();
    gtk_event_controller_set_propagation_phase(motion, GTK_PHASE_CAPTURE);
    moved_ = connect<void(GtkEventControllerMotion*, double, double)>(
        motion, "motion", [this](GtkEventControllerMotion*, double x, double y) {
            if (dragWanted_) pointerMoved(x, y);
        });
    gtk_widget_add_controller(widget(), motion);
}

void ParvelaWebView::watchKeys() {
    GtkEventController* const keys = gtk_event_controller_key_new();
    gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
    typed_ = connect<gboolean(GtkEventControllerKey*, guint, guint, GdkModifierType)>(
        keys, "key-pressed", [this](GtkEventControllerKey*, guint key, guint, GdkModifierType modifiers) {
            if (const auto tell = std::exchange(onFirstKey, nullptr)) tell();
            if (!onMenuKey || !KeyboardMenu::isCalledBy(key, modifiers)) return gboolean{GDK_EVENT_PROPAGATE};
            onMenuKey();
            return gboolean{GDK_EVENT_STOP};
        });
    gtk_widget_add_controller(widget(), keys);
}

/// What is seen under and around the page.
void ParvelaWebView::showBackground() {
    GdkRGBA colour;
    if (gtk_style_context_lookup_color(gtk_widget_get_style_context(widget()), "ParvelaBackground", &colour)) {
        webkit_web_view_set_background_color(view_.get(), &colour);
    }
}

std::optional<ParvelaWebView::MouseDown> ParvelaWebView::recentMouseDown(Button button) const {
    if (!lastMouseDown_ || g_get_monotonic_time() - lastMouseDown_->at >= pressLifetime) return std::nullopt;
    if (button == Button::stillPressed && !buttonIsHeld()) return std::nullopt;
    return lastMouseDown_;
}

bool ParvelaWebView::buttonIsHeld() const {
    GdkSurface* const surface = surfaceOf(widget());
    const auto pointer = surface ? pointerOn(surface) : std::nullopt;
    return pointer && pointer->primaryHeld;
}

void ParvelaWebView::beginWindowDrag() {
    // Starting at once would take the second press of a double click away from the page.
    dragWanted_ = recentMouseDown(Button::stillPressed).has_value();
}

void ParvelaWebView::pointerMoved(double x, double y) {
    if (!lastMouseDown_ || !buttonIsHeld()) {
        dragWanted_ = false;
        return;
    }
    const MouseDown& press = *lastMouseDown_;
    if (!gtk_drag_check_threshold(widget(), static_cast<int>(press.x), static_cast<int>(press.y), static_cast<int>(x),
                                  static_cast<int>(y))) {
        return;
    }
    dragWanted_ = false;
    moveWindow();
}

void ParvelaWebView::moveWindow() {
    GdkSurface* const surface = surfaceOf(widget());
    const auto pointer = surface ? pointerOn(surface) : std::nullopt;
    if (!pointer || !GDK_IS_TOPLEVEL(surface)) return;
    GdkDevice* const device = gdk_seat_get_pointer(gdk_display_get_default_seat(gdk_surface_get_display(surface)));
    gdk_toplevel_begin_move(GDK_TOPLEVEL(surface), device, GDK_BUTTON_PRIMARY, pointer->x, pointer->y,
                            GDK_CURRENT_TIME);
    endPress();
}

/// The window manager swallows the release that ends a move, so the engine would take the button for held.
void ParvelaWebView::endPress() {
    const auto controllers = Ref<GListModel>::adopt(gtk_widget_observe_controllers(widget()));
    for (guint index = 0; index < g_list_model_get_n_items(controllers.get()); ++index) {
        const auto controller =
            Ref<GtkEventController>::adopt(GTK_EVENT_CONTROLLER(g_list_model_get_item(controllers.get(), index)));
        gtk_event_controller_reset(controller.get());
    }
}

void ParvelaWebView::run(const std::string& script) const {
    webkit_web_view_evaluate_javascript(view_.get(), script.data(), static_cast<gssize>(script.size()), nullptr,
                                        nullptr, nullptr, nullptr, nullptr);
}

void ParvelaWebView::dispatchOrElse(const NativeBridge::Event& event, std::function<void()> otherwise) const {
    const auto query = std::make_shared<Query>(std::move(otherwise));
    query->patience = MainLoopTimer(answerPatience, [weak = std::weak_ptr(query)] {
        if (const auto waiting = weak.lock()) waiting->settle(false);
    });
    const std::string script = NativeBridge::handledScript(event);
    webkit_web_view_evaluate_javascript(
        view_.get(), script.data(), static_cast<gssize>(script.size()), nullptr, nullptr, nullptr,
        [](GObject* view, GAsyncResult* result, gpointer data) {
            const std::unique_ptr<std::shared_ptr<Query>> asked(static_cast<std::shared_ptr<Query>*>(data));
            const auto value = Ref<JSCValue>::adopt(
                webkit_web_view_evaluate_javascript_finish(WEBKIT_WEB_VIEW(view), result, nullptr));
            (*asked)->settle(value && jsc_value_is_boolean(value.get()) && jsc_value_to_boolean(value.get()));
        },
        new std::shared_ptr<Query>(query));
}

}  // namespace parvela
