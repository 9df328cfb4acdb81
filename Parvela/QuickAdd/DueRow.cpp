#include "QuickAdd/DueRow.h"

#include <ParvelaKit/ShownTitle.h>

#include <string>

namespace parvela {

namespace {

/// Longer names help nobody who has to listen to them.
constexpr std::size_t longestName = 300;
constexpr std::size_t longestTooltip = 1000;

}  // namespace

DueRow::DueRow()
    : box_(Ref<GtkWidget>::sink(gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 8))),
      done_(GTK_CHECK_BUTTON(gtk_check_button_new())),
      title_(GTK_LABEL(gtk_label_new(nullptr))),
      overdue_(gtk_label_new("Overdue")),
      open_(gtk_button_new_with_label("Open in Parvela")) {
    gtk_widget_add_css_class(widget(), "due-row");
    gtk_label_set_ellipsize(title_, PANGO_ELLIPSIZE_END);
    gtk_label_set_xalign(title_, 0);
    gtk_widget_set_hexpand(GTK_WIDGET(title_), TRUE);
    gtk_widget_add_css_class(GTK_WIDGET(title_), "title");
    gtk_widget_add_css_class(overdue_, "warning");
    gtk_widget_add_css_class(overdue_, "caption");
    gtk_widget_add_css_class(open_, "flat");
    gtk_widget_add_css_class(open_, "small");
    gtk_widget_set_valign(open_, GTK_ALIGN_CENTER);
    gtk_widget_set_visible(open_, FALSE);
    for (GtkWidget* const child : {GTK_WIDGET(done_), GTK_WIDGET(title_), overdue_, open_}) {
        gtk_box_append(GTK_BOX(widget()), child);
    }
    connections_.push_back(connect<void(GtkCheckButton*)>(done_, "toggled", [this](GtkCheckButton* check) {
        if (!isShowing_ && toggle) toggle(gtk_check_button_get_active(check));
    }));
    connections_.push_back(connect<void(GtkButton*)>(open_, "clicked", [this](GtkButton*) {
        if (open) open();
    }));
    GtkEventController* const pointer = gtk_event_controller_motion_new();
    connections_.push_back(connect<void(GtkEventControllerMotion*, double, double)>(
        pointer, "enter", [this](GtkEventControllerMotion*, double, double) {
            hovering_ = true;
            reveal();
        }));
    connections_.push_back(
        connect<void(GtkEventControllerMotion*)>(pointer, "leave", [this](GtkEventControllerMotion*) {
            hovering_ = false;
            reveal();
        }));
    gtk_widget_add_controller(widget(), pointer);
}

void DueRow::show(const TaskSummary& task, CivilDate today) {
    task_ = task;
    isShowing_ = true;
    gtk_check_button_set_active(done_, task.done);
    isShowing_ = false;
    gtk_widget_set_tooltip_text(GTK_WIDGET(done_), task.done ? "Reopen" : "Mark done");
    const std::string name = shortened(task.title, longestName);
    gtk_label_set_text(title_, shownTitle(task.title, longestName).c_str());
    gtk_widget_set_tooltip_text(GTK_WIDGET(title_), shortened(task.title, longestTooltip).c_str());
    gtk_accessible_update_property(GTK_ACCESSIBLE(done_), GTK_ACCESSIBLE_PROPERTY_LABEL, name.c_str(),
                                   GTK_ACCESSIBLE_PROPERTY_DESCRIPTION, task.done ? "Reopen" : "Mark done", -1);
    const auto due = task.dueDate ? CivilDate::parse(*task.dueDate) : std::nullopt;
    gtk_widget_set_visible(overdue_, due && *due < today);
    if (task.done) {
        gtk_widget_add_css_class(widget(), "done");
    } else {
        gtk_widget_remove_css_class(widget(), "done");
    }
}

void DueRow::flip() {
    gtk_check_button_set_active(done_, !gtk_check_button_get_active(done_));
}

void DueRow::setFocused(bool isFocused) {
    isFocused_ = isFocused;
    reveal();
}

void DueRow::reveal() {
    gtk_widget_set_visible(open_, hovering_ || isFocused_);
}

}  // namespace parvela
