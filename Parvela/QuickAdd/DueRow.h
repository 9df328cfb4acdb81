#pragma once

#include <ParvelaKit/CivilDate.h>
#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Records.h>

#include <functional>
#include <vector>

#include <gtk/gtk.h>

namespace parvela {

/// One task of the due list: a check box, the title, "Overdue" when it is, and a button that opens the task, revealed
/// while the pointer or the keyboard is in the row. Made once and shown with one task after another.
class DueRow {
public:
    DueRow();
    DueRow(const DueRow&) = delete;
    DueRow& operator=(const DueRow&) = delete;

    GtkWidget* widget() const noexcept { return box_.get(); }
    void show(const TaskSummary& task, CivilDate today);
    const TaskSummary& task() const noexcept { return task_; }
    /// What a click on the check box does.
    void flip();
    /// The whole row has the keyboard, or something in it.
    void setFocused(bool isFocused);

    std::function<void(bool done)> toggle;
    std::function<void()> open;

private:
    void reveal();

    Ref<GtkWidget> box_;
    GtkCheckButton* done_;
    GtkLabel* title_;
    GtkWidget* overdue_;
    GtkWidget* open_;
    TaskSummary task_;
    bool hovering_ = false;
    bool isFocused_ = false;
    bool isShowing_ = false;
    std::vector<Connection> connections_;
};

}  // namespace parvela
