#include "HotKeys/HotKeyRecorder.h"

#include <chrono>
#include <utility>

namespace parvela {

namespace {

constexpr std::uint32_t escapeKey = 53;
constexpr const char* refusedClass = "error";
/// A pressed shortcut that is grabbed takes the focus away for a moment.
constexpr std::chrono::milliseconds focusLossPatience{200};

std::uint32_t modifiersOf(GdkModifierType state) {
    std::uint32_t modifiers = 0;
    if (state & GDK_SHIFT_MASK) modifiers |= KeyModifiers::shift;
    if (state & GDK_CONTROL_MASK) modifiers |= KeyModifiers::control;
    if (state & GDK_ALT_MASK) modifiers |= KeyModifiers::option;
    if (state & GDK_SUPER_MASK) modifiers |= KeyModifiers::command;
    return modifiers;
}

bool isModifierKey(GdkDisplay* display, std::uint32_t hardwareKeycode) {
    GdkKeymapKey* places = nullptr;
    guint* symbols = nullptr;
    int count = 0;
    if (!gdk_display_map_keycode(display, hardwareKeycode, &places, &symbols, &count)) return false;
    bool found = false;
    for (int index = 0; index < count; ++index) {
        const guint symbol = symbols[index];
        found |= (symbol >= GDK_KEY_Shift_L && symbol <= GDK_KEY_Hyper_R) || symbol == GDK_KEY_Num_Lock ||
                 symbol == GDK_KEY_ISO_Level3_Shift || symbol == GDK_KEY_ISO_Level5_Shift ||
                 symbol == GDK_KEY_Mode_switch || symbol == GDK_KEY_ISO_Next_Group;
    }
    g_free(places);
    g_free(symbols);
    return found;
}

}  // namespace

HotKeyRecorder::HotKeyRecorder(std::shared_ptr<HotKeyCenter> center, HotKey key)
    : center_(std::move(center)), key_(key), button_(Ref<GtkButton>::sink(GTK_BUTTON(gtk_button_new_with_label("")))) {
    connections_.push_back(connect<void(GtkButton*)>(button_.get(), "clicked", [this](GtkButton*) {
        if (isRecording()) {
            stop();
        } else {
            start();
        }
    }));
    connections_.push_back(connect<void(GtkWidget*)>(button_.get(), "unmap", [this](GtkWidget*) { stop(); }));
    GtkEventController* const focus = gtk_event_controller_focus_new();
    connections_.push_back(connect<void(GtkEventControllerFocus*)>(focus, "leave", [this](GtkEventControllerFocus*) {
        if (!isRecording()) return;
        focusPatience_ = MainLoopTimer(focusLossPatience, [this] {
            if (!hasFocus()) stop();
        });
    }));
    gtk_widget_add_controller(widget(), focus);
    show();
}

HotKeyRecorder::~HotKeyRecorder() {
    stop();
}

bool HotKeyRecorder::hasFocus() const {
    GtkRoot* const root = gtk_widget_get_root(widget());
    return root && gtk_root_get_focus(root) == widget() && gtk_window_is_active(GTK_WINDOW(root));
}

void HotKeyRecorder::setKey(HotKey key) {
    key_ = key;
    show();
}

void HotKeyRecorder::start() {
    GtkRoot* const root = gtk_widget_get_root(widget());
    if (!root) return;
    gtk_widget_grab_focus(widget());
    // In front of the window's own shortcuts: the keys shall reach nothing else.
    keys_ = Ref<GtkEventController>::adopt(gtk_event_controller_key_new());
    gtk_event_controller_set_propagation_phase(keys_.get(), GTK_PHASE_CAPTURE);
    keyPressed_ = connect<gboolean(GtkEventControllerKey*, guint, guint, GdkModifierType)>(
        keys_.get(), "key-pressed",
        [this](GtkEventControllerKey*, guint, guint keycode, GdkModifierType state) -> gboolean {
            typed(keycode, state);
            return GDK_EVENT_STOP;
        });
    gtk_widget_add_controller(GTK_WIDGET(root), Ref<GtkEventController>(keys_).release());
    // The shortcut in force reaches no window; it may be recorded again all the same.
    diversion_ = center_->divert([this](HotKey key) { record(key); });
    show();
}

void HotKeyRecorder::stop() {
    if (!isRecording()) return;
    keyPressed_.disconnect();
    focusPatience_.reset();
    diversion_ = {};
    if (GtkWidget* const root = gtk_event_controller_get_widget(keys_.get())) {
        gtk_widget_remove_controller(root, keys_.get());
    }
    keys_ = nullptr;
    gtk_widget_remove_css_class(widget(), refusedClass);
    show();
}

void HotKeyRecorder::typed(std::uint32_t hardwareKeycode, GdkModifierType state) {
    const auto keyCode = keyCodeOf(hardwareKeycode);
    const std::uint32_t modifiers = modifiersOf(state);
    if (!keyCode) {
        if (!isModifierKey(gtk_widget_get_display(widget()), hardwareKeycode)) refuse();
    } else if (*keyCode == escapeKey && modifiers == 0) {
        stop();
    } else if ((modifiers & ~KeyModifiers::shift) == 0) {
        refuse();
    } else {
        record({.keyCode = *keyCode, .modifiers = modifiers});
    }
}

void HotKeyRecorder::record(HotKey key) {
    key_ = key;
    stop();
    if (onChange) onChange(key_);
}

void HotKeyRecorder::refuse() {
    // Where sounds are off, the colour tells.
    gtk_widget_add_css_class(widget(), refusedClass);
    if (GtkNative* const native = gtk_widget_get_native(widget())) gdk_surface_beep(gtk_native_get_surface(native));
}

void HotKeyRecorder::show() {
    const std::string text = isRecording() ? "Type a shortcut…" : center_->displayString(key_);
    gtk_button_set_label(button_.get(), text.c_str());
    // Signs for modifiers are not read aloud, and not everybody knows them.
    guint symbol = 0;
    GdkModifierType mask{};
    gtk_accelerator_parse(center_->accelerator(key_).c_str(), &symbol, &mask);
    const CharPtr keys(symbol == 0 ? nullptr : gtk_accelerator_get_label(symbol, mask));
    const std::string spelled = keys ? keys.get() : text;
    const std::string hint = isRecording() ? "With Ctrl, Alt or Super; Escape to cancel" : spelled;
    const std::string spoken = isRecording() ? text : "Shortcut " + spelled;
    gtk_widget_set_tooltip_text(widget(), hint.c_str());
    gtk_accessible_update_property(GTK_ACCESSIBLE(widget()), GTK_ACCESSIBLE_PROPERTY_LABEL, spoken.c_str(),
                                   GTK_ACCESSIBLE_PROPERTY_DESCRIPTION, hint.c_str(), -1);
}

}  // namespace parvela
