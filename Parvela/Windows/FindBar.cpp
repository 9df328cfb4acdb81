#include "Windows/FindBar.h"

#include "Windows/MainWindowController.h"

#include <string>
#include <utility>

#include <fmt/format.h>

namespace parvela {

namespace {

constexpr guint countedMatches = 1000;

}  // namespace

FindBar::FindBar(const Interface& interface, std::function<MainWindowController*()> tab)
    : bar_(interface.get<GtkSearchBar>("findBar")),
      field_(interface.get<GtkEditable>("findField")),
      count_(interface.get<GtkLabel>("findCount")),
      tab_(std::move(tab)) {
    gtk_search_bar_connect_entry(bar_, field_);
    connections_.push_back(
        connect<void(GtkSearchEntry*)>(field_, "search-changed", [this](GtkSearchEntry*) { search(); }));
    const auto step = [this](auto move) {
        return [this, move](gpointer) {
            if (auto* const find = controller()) move(find);
        };
    };
    const auto next = step([](WebKitFindController* find) { webkit_find_controller_search_next(find); });
    const auto previous = step([](WebKitFindController* find) { webkit_find_controller_search_previous(find); });
    connections_.push_back(connect<void(gpointer)>(field_, "activate", next));
    connections_.push_back(connect<void(gpointer)>(field_, "next-match", next));
    connections_.push_back(connect<void(gpointer)>(field_, "previous-match", previous));
    connections_.push_back(connect<void(gpointer)>(interface.get<GtkButton>("findNext"), "clicked", next));
    connections_.push_back(connect<void(gpointer)>(interface.get<GtkButton>("findPrevious"), "clicked", previous));
    connections_.push_back(connect<void(GtkSearchBar*, GParamSpec*)>(
        bar_, "notify::search-mode-enabled", [this](GtkSearchBar*, GParamSpec*) {
            if (gtk_search_bar_get_search_mode(bar_)) return;
            // Another tab may be in front by now.
            if (searched_) webkit_find_controller_search_finish(searched_.get());
            searched_ = nullptr;
            results_.clear();
            if (auto* const front = tab_()) gtk_widget_grab_focus(front->widget());
        }));
    GtkEventController* const keys = gtk_event_controller_key_new();
    connections_.push_back(connect<gboolean(GtkEventControllerKey*, guint, guint, GdkModifierType)>(
        keys, "key-pressed", [this](GtkEventControllerKey*, guint key, guint, GdkModifierType modifiers) {
            const bool back = (key == GDK_KEY_Return || key == GDK_KEY_KP_Enter) && (modifiers & GDK_SHIFT_MASK) != 0;
            if (back) {
                if (auto* const find = controller()) webkit_find_controller_search_previous(find);
            }
            return static_cast<gboolean>(back);
        }));
    gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
    gtk_widget_add_controller(GTK_WIDGET(field_), keys);
}

WebKitFindController* FindBar::controller() {
    auto* const front = tab_();
    return front ? webkit_web_view_get_find_controller(front->webView().get()) : nullptr;
}

void FindBar::show() {
    gtk_search_bar_set_search_mode(bar_, TRUE);
    gtk_widget_grab_focus(GTK_WIDGET(field_));
    gtk_editable_select_region(field_, 0, -1);
    if (*gtk_editable_get_text(field_)) search();
}

void FindBar::hide() {
    gtk_search_bar_set_search_mode(bar_, FALSE);
}

void FindBar::search() {
    auto* const find = controller();
    if (!find) return;
    results_.clear();
    results_.push_back(
        connect<void(WebKitFindController*, guint)>(find, "found-text", [this](WebKitFindController*, guint matches) {
            showCount(matches > countedMatches ? "Many matches"
                      : matches == 1           ? "1 match"
                                               : fmt::format("{} matches", matches).c_str());
        }));
    results_.push_back(connect<void(WebKitFindController*)>(find, "failed-to-find-text",
                                                            [this](WebKitFindController*) { showCount("Not found"); }));
    const char* const text = gtk_editable_get_text(field_);
    if (!*text) {
        webkit_find_controller_search_finish(find);
        showCount("");
        return;
    }
    constexpr auto options =
        static_cast<guint32>(WEBKIT_FIND_OPTIONS_CASE_INSENSITIVE | WEBKIT_FIND_OPTIONS_WRAP_AROUND);
    searched_ = Ref<WebKitFindController>::ref(find);
    webkit_find_controller_search(find, text, options, countedMatches);
}

void FindBar::showCount(const char* text) {
    gtk_label_set_text(count_, text);
}

}  // namespace parvela
