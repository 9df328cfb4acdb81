#pragma once

#include "Model/AppModel.h"
#include "QuickAdd/DueRow.h"
#include "Support/Interface.h"

#include <ParvelaKit/GLibPtr.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gtk/gtk.h>

namespace parvela {

/// The tasks due today. Only the rows in view exist, however many tasks there are, and a list that changes keeps the
/// rows and the place of those that stay.
class DueList {
public:
    DueList(const Interface& interface, std::shared_ptr<AppModel> model);
    DueList(const DueList&) = delete;
    DueList& operator=(const DueList&) = delete;

    /// A new day may have come.
    void willShow();

    std::function<void(const TaskSummary&)> openTask;

private:
    void addFactory();
    void addKeys();
    void showTasks();
    void showRows();
    void showRow(GtkListItem* item);
    void showError();
    void open(guint position);
    /// Of the list item that has the keyboard itself; null when something in it or elsewhere has it.
    DueRow* focusedRow();

    Interface interface_;
    std::shared_ptr<AppModel> model_;
    GtkGridView* list_;       ///< of one column: a list view keeps 200 rows alive, a grid 30
    Ref<GtkStringList> ids_;  ///< of the model's tasks, in its order
    std::map<GtkListItem*, std::unique_ptr<DueRow>> rows_;
    Ref<GtkListItemFactory> factory_;
    std::vector<Connection> connections_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace parvela
