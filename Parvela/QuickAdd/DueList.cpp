#include "QuickAdd/DueList.h"

#include <ParvelaKit/ShownTitle.h>

#include <string_view>

#include <fmt/format.h>

namespace parvela {

DueList::DueList(const Interface& interface, std::shared_ptr<AppModel> model)
    : interface_(interface),
      model_(std::move(model)),
      list_(interface.get<GtkGridView>("due")),
      ids_(Ref<GtkStringList>::adopt(gtk_string_list_new(nullptr))) {
    addFactory();
    addKeys();
    const auto selection =
        Ref<GtkNoSelection>::adopt(gtk_no_selection_new(G_LIST_MODEL(Ref<GtkStringList>(ids_).release())));
    gtk_grid_view_set_model(list_, GTK_SELECTION_MODEL(selection.get()));
    connections_.push_back(connect<void(GtkGridView*, guint)>(
        list_, "activate", [this](GtkGridView*, guint position) { open(position); }));
    subscriptions_.push_back(model_->dueToday.observe([this](const auto&) { showTasks(); }));
    subscriptions_.push_back(model_->dueError.observe([this](const auto&) { showError(); }));
    subscriptions_.push_back(model_->boardsError.observe([this](const auto&) { showError(); }));
    showTasks();
    showError();
}

void DueList::willShow() {
    showRows();
}

void DueList::addFactory() {
    factory_ = Ref<GtkListItemFactory>::adopt(gtk_signal_list_item_factory_new());
    const auto on = [this](const char* signal, auto handler) {
        connections_.push_back(connect<void(GtkSignalListItemFactory*, GtkListItem*)>(
            factory_.get(), signal, [handler](GtkSignalListItemFactory*, GtkListItem* item) { handler(item); }));
    };
    on("setup", [this](GtkListItem* item) {
        auto row = std::make_unique<DueRow>();
        DueRow* const made = row.get();
        made->toggle = [this, made](bool done) { model_->setDone(made->task().id, done).detach(); };
        made->open = [this, made] {
            const TaskSummary task = made->task();
            openTask(task);
        };
        gtk_list_item_set_child(item, made->widget());
        rows_.insert_or_assign(item, std::move(row));
    });
    on("bind", [this](GtkListItem* item) { showRow(item); });
    on("teardown", [this](GtkListItem* item) {
        gtk_list_item_set_child(item, nullptr);
        rows_.erase(item);
    });
    gtk_grid_view_set_factory(list_, factory_.get());
}

void DueList::addKeys() {
    GtkEventController* const keys = gtk_event_controller_key_new();
    connections_.push_back(connect<gboolean(GtkEventControllerKey*, guint, guint, GdkModifierType)>(
        keys, "key-pressed", [this](GtkEventControllerKey*, guint key, guint, GdkModifierType) -> gboolean {
            if (key != GDK_KEY_space && key != GDK_KEY_KP_Space) return FALSE;
            DueRow* const row = focusedRow();
            if (row) row->flip();
            return row != nullptr;
        }));
    gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
    gtk_widget_add_controller(GTK_WIDGET(list_), keys);
    connections_.push_back(connect<void(GtkWindow*, GParamSpec*)>(
        interface_.get<GtkWindow>("window"), "notify::focus-widget", [this](GtkWindow* window, GParamSpec*) {
            GtkWidget* const focus = gtk_window_get_focus(window);
            for (const auto& [item, row] : rows_) {
                GtkWidget* const holder = gtk_widget_get_parent(row->widget());
                row->setFocused(focus && holder && (focus == holder || gtk_widget_is_ancestor(focus, holder)));
            }
        }));
}

DueRow* DueList::focusedRow() {
    GtkWidget* const focus = gtk_window_get_focus(interface_.get<GtkWindow>("window"));
    for (const auto& [item, row] : rows_) {
        if (focus && gtk_widget_get_parent(row->widget()) == focus) return row.get();
    }
    return nullptr;
}

void DueList::showTasks() {
    const auto& tasks = model_->dueToday.get();
    const std::size_t shown = g_list_model_get_n_items(G_LIST_MODEL(ids_.get()));
    const auto idAt = [this](std::size_t index) -> std::string_view {
        return gtk_string_list_get_string(ids_.get(), static_cast<guint>(index));
    };
    // What the old and the new list begin and end with stays; what is between them is exchanged.
    std::size_t before = 0;
    while (before < shown && before < tasks.size() && idAt(before) == tasks[before].id) ++before;
    std::size_t after = 0;
    while (after < shown - before && after < tasks.size() - before &&
           idAt(shown - after - 1) == tasks[tasks.size() - after - 1].id) {
        ++after;
    }
    if (shown != before + after || tasks.size() != before + after) {
        std::vector<const char*> added;
        for (std::size_t i = before; i < tasks.size() - after; ++i) added.push_back(tasks[i].id.c_str());
        added.push_back(nullptr);
        gtk_string_list_splice(ids_.get(), static_cast<guint>(before), static_cast<guint>(shown - before - after),
                               added.data());
    }
    showRows();
    gtk_label_set_text(interface_.get<GtkLabel>("dueCount"), fmt::format("{}", tasks.size()).c_str());
    gtk_stack_set_visible_child_name(interface_.get<GtkStack>("dueStack"), tasks.empty() ? "empty" : "list");
}

void DueList::showRows() {
    for (const auto& [item, row] : rows_) showRow(item);
}

void DueList::showRow(GtkListItem* item) {
    const guint position = gtk_list_item_get_position(item);
    const auto& tasks = model_->dueToday.get();
    const auto row = rows_.find(item);
    if (position >= tasks.size() || row == rows_.end()) return;
    row->second->show(tasks[position], model_->session.clock().today());
}

void DueList::showError() {
    const auto& due = model_->dueError.get();
    const auto& error = due ? due : model_->boardsError.get();
    gtk_widget_set_visible(interface_.get<GtkWidget>("dueError"), error.has_value());
    if (error) gtk_label_set_text(interface_.get<GtkLabel>("dueError"), shownTitle(*error).c_str());
}

void DueList::open(guint position) {
    const auto& tasks = model_->dueToday.get();
    if (position >= tasks.size()) return;
    const TaskSummary task = tasks[position];
    openTask(task);
}

}  // namespace parvela
