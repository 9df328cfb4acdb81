#include "QuickAdd/CompletionList.h"

#include <ParvelaKit/ShownTitle.h>

namespace parvela {

namespace {

constexpr int gap = 4;

GtkWidget* label(const std::string& text, const char* style) {
    GtkWidget* const widget = gtk_label_new(text.c_str());
    gtk_label_set_ellipsize(GTK_LABEL(widget), PANGO_ELLIPSIZE_END);
    gtk_label_set_xalign(GTK_LABEL(widget), 0);
    if (style) gtk_widget_add_css_class(widget, style);
    return widget;
}

GtkWidget* rowFor(const QuickAddCompletion& completion) {
    const bool isMember = completion.kind == QuickAddCompletion::Kind::member;
    GtkWidget* const box = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 8);
    gtk_box_append(GTK_BOX(box),
                   gtk_image_new_from_icon_name(isMember ? "parvela-person-symbolic" : "parvela-tag-symbolic"));
    gtk_box_append(GTK_BOX(box), label(shownTitle(completion.name), nullptr));
    if (!completion.detail.empty()) {
        GtkWidget* const detail = label(shownTitle(completion.detail), "dim-label");
        gtk_widget_set_hexpand(detail, TRUE);
        gtk_widget_set_halign(detail, GTK_ALIGN_END);
        gtk_box_append(GTK_BOX(box), detail);
    }
    GtkWidget* const row = gtk_list_box_row_new();
    gtk_list_box_row_set_child(GTK_LIST_BOX_ROW(row), box);
    gtk_widget_set_focusable(row, FALSE);
    gtk_accessible_update_property(GTK_ACCESSIBLE(row), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                   shortened(completion.name, 300).c_str(), -1);
    return row;
}

}  // namespace

CompletionList::CompletionList(const Interface& interface, GtkWidget* field)
    : field_(field),
      frame_(interface.get<GtkWidget>("completionFrame")),
      list_(interface.get<GtkListBox>("completions")) {
    connections_.push_back(
        connect<void(GtkListBox*, GtkListBoxRow*)>(list_, "row-activated", [this](GtkListBox*, GtkListBoxRow* row) {
            onChosen(static_cast<std::size_t>(gtk_list_box_row_get_index(row)));
        }));
}

void CompletionList::hide() {
    gtk_widget_set_visible(frame_, FALSE);
}

void CompletionList::show(const std::vector<QuickAddCompletion>& completions, std::optional<std::size_t> selected) {
    if (completions.empty()) return hide();
    if (completions != shown_) fill(completions);
    gtk_list_box_select_row(list_,
                            selected ? gtk_list_box_get_row_at_index(list_, static_cast<int>(*selected)) : nullptr);
    standBelowField();
    gtk_widget_set_visible(frame_, TRUE);
}

void CompletionList::fill(const std::vector<QuickAddCompletion>& completions) {
    while (GtkListBoxRow* const row = gtk_list_box_get_row_at_index(list_, 0)) {
        gtk_list_box_remove(list_, GTK_WIDGET(row));
    }
    for (const auto& completion : completions) gtk_list_box_append(list_, rowFor(completion));
    shown_ = completions;
}

void CompletionList::standBelowField() {
    graphene_rect_t area;
    if (!gtk_widget_compute_bounds(field_, gtk_widget_get_parent(frame_), &area)) return;
    const int left = static_cast<int>(area.origin.x);
    const int right = gtk_widget_get_width(gtk_widget_get_parent(frame_)) - left - static_cast<int>(area.size.width);
    gtk_widget_set_margin_top(frame_, static_cast<int>(area.origin.y + area.size.height) + gap);
    gtk_widget_set_margin_start(frame_, left);
    gtk_widget_set_margin_end(frame_, right);
}

}  // namespace parvela
