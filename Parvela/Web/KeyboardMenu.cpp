#include "Web/KeyboardMenu.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>

namespace parvela {

namespace {

/// Null when the page shows a menu itself.
constexpr std::string_view askPage = R"((() => {
    const target = document.activeElement || document.body;
    const box = target.getBoundingClientRect();
    const x = Math.max(box.left, 0) + 16;
    const y = target === document.body ? 80 : box.top + Math.min(box.height, 28);
    const event = new MouseEvent('contextmenu', {bubbles: true, cancelable: true, view: window, button: 2,
                                                 clientX: x, clientY: y});
    if (!target.dispatchEvent(event)) return null;
    const field = 'textarea, input:is([type=text], [type=search], [type=email], [type=url], [type=tel], [type=number], ' +
                  '[type=password], :not([type]))';
    const link = target.closest('a[href]');
    return {x, y, editable: target.isContentEditable || target.matches(field), link: link ? link.href : ''};
})())";

struct Entry {
    const char* label;
    const char* action;
};

void append(GMenu* menu, std::initializer_list<Entry> entries) {
    const auto section = Ref<GMenu>::adopt(g_menu_new());
    for (const Entry& entry : entries) g_menu_append(section.get(), entry.label, entry.action);
    g_menu_append_section(menu, nullptr, G_MENU_MODEL(section.get()));
}

Ref<JSCValue> property(JSCValue* object, const char* name) {
    return Ref<JSCValue>::adopt(jsc_value_object_get_property(object, name));
}

/// A place in the page as one in the view, within it whatever the page says.
int placed(double position, double zoom, int size) {
    const double inView = std::isfinite(position) ? position * zoom : 0;
    return static_cast<int>(std::clamp(inView, 0.0, static_cast<double>(std::max(size, 1) - 1)));
}

}  // namespace

KeyboardMenu::KeyboardMenu(WebKitWebView* view, std::function<void(const Url&)> openInBrowser)
    : view_(view), openInBrowser_(std::move(openInBrowser)) {
}

KeyboardMenu::~KeyboardMenu() {
    takeDown();
}

bool KeyboardMenu::isCalledBy(guint key, GdkModifierType modifiers) {
    const unsigned held = modifiers & (GDK_SHIFT_MASK | GDK_CONTROL_MASK | GDK_ALT_MASK | GDK_SUPER_MASK);
    return (key == GDK_KEY_Menu && held == 0) || (key == GDK_KEY_F10 && held == GDK_SHIFT_MASK);
}

void KeyboardMenu::show() {
    webkit_web_view_evaluate_javascript(
        view_, askPage.data(), static_cast<gssize>(askPage.size()), nullptr, nullptr, nullptr,
        [](GObject* view, GAsyncResult* result, gpointer data) {
            const std::unique_ptr<std::weak_ptr<KeyboardMenu*>> asker(static_cast<std::weak_ptr<KeyboardMenu*>*>(data));
            const auto place = Ref<JSCValue>::adopt(
                webkit_web_view_evaluate_javascript_finish(WEBKIT_WEB_VIEW(view), result, nullptr));
            const auto self = asker->lock();
            if (self && place && jsc_value_is_object(place.get())) (*self)->popUp(place.get());
        },
        new std::weak_ptr<KeyboardMenu*>(self_));
}

void KeyboardMenu::popUp(JSCValue* place) {
    GtkWidget* const view = GTK_WIDGET(view_);
    if (!gtk_widget_get_mapped(view)) return;
    takeDown();
    const CharPtr address(jsc_value_to_string(property(place, "link").get()));
    const auto link = address ? Url::parse(address.get()) : std::nullopt;
    const auto menu = Ref<GMenu>::adopt(g_menu_new());
    const auto actions = Ref<GSimpleActionGroup>::adopt(g_simple_action_group_new());
    if (link && (link->scheme() == "http" || link->scheme() == "https")) {
        append(menu.get(), {{"Open Link in Browser", "page.open"}, {"Copy Link", "page.copy"}});
        const auto add = [&](const char* name, std::function<void()> handler) {
            const auto action = Ref<GSimpleAction>::adopt(g_simple_action_new(name, nullptr));
            connections_.push_back(connect<void(GSimpleAction*, GVariant*)>(
                action.get(), "activate", [handler = std::move(handler)](GSimpleAction*, GVariant*) { handler(); }));
            g_action_map_add_action(G_ACTION_MAP(actions.get()), G_ACTION(action.get()));
        };
        add("open", [this, url = *link] { openInBrowser_(url); });
        add("copy",
            [view, url = *link] { gdk_clipboard_set_text(gtk_widget_get_clipboard(view), url.text().c_str()); });
    }
    if (jsc_value_to_boolean(property(place, "editable").get())) {
        append(menu.get(), {{"Undo", "win.undo"}, {"Redo", "win.redo"}});
        append(menu.get(), {{"Cut", "win.cut"},
                            {"Copy", "win.copy"},
                            {"Paste", "win.paste"},
                            {"Paste and Match Style", "win.pasteAsPlainText"},
                            {"Delete", "win.delete"},
                            {"Select All", "win.selectAll"}});
    } else {
        append(menu.get(), {{"Copy", "win.copy"}});
        append(menu.get(), {{"Back", "win.goBack"}, {"Forward", "win.goForward"}, {"Reload Page", "win.reloadPage"}});
    }

    g_set_weak_pointer(&popover_, gtk_popover_menu_new_from_model(G_MENU_MODEL(menu.get())));
    gtk_widget_insert_action_group(popover_, "page", G_ACTION_GROUP(actions.get()));
    gtk_widget_set_parent(popover_, view);
    gtk_popover_set_has_arrow(GTK_POPOVER(popover_), FALSE);
    gtk_widget_set_halign(popover_, GTK_ALIGN_START);
    const double zoom = webkit_web_view_get_zoom_level(view_);
    const GdkRectangle at{placed(jsc_value_to_double(property(place, "x").get()), zoom, gtk_widget_get_width(view)),
                          placed(jsc_value_to_double(property(place, "y").get()), zoom, gtk_widget_get_height(view)), 1,
                          1};
    gtk_popover_set_pointing_to(GTK_POPOVER(popover_), &at);
    connections_.push_back(connect<void(GtkPopover*)>(popover_, "closed", [this](GtkPopover*) {
        // Once the chosen command has had its say.
        closed_ = MainLoopTimer(std::chrono::milliseconds{0}, [this] {
            takeDown();
            gtk_widget_grab_focus(GTK_WIDGET(view_));
        });
    }));
    gtk_popover_popup(GTK_POPOVER(popover_));
}

void KeyboardMenu::takeDown() {
    closed_.reset();
    connections_.clear();
    GtkWidget* const shown = popover_;
    g_clear_weak_pointer(&popover_);
    if (shown) gtk_widget_unparent(shown);
}

}  // namespace parvela
