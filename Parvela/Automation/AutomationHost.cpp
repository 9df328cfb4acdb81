#include "Automation/AutomationHost.h"

#include <chrono>
#include <utility>

namespace parvela {

namespace {

/// A program that the bus started, and that nobody sees, ends when no other call comes for so long.
constexpr std::chrono::seconds unusedPatience{60};

/// A window, a dialog or the quick-add field.
bool showsAnything() {
    GListModel* const all = gtk_window_get_toplevels();
    for (guint i = 0; i < g_list_model_get_n_items(all); ++i) {
        const auto window = Ref<GtkWidget>::adopt(static_cast<GtkWidget*>(g_list_model_get_item(all, i)));
        if (gtk_widget_get_visible(window.get())) return true;
    }
    return false;
}

}  // namespace

AutomationHost::AutomationHost() : doors_(dbus::Bus::adopt(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr))) {
}

void AutomationHost::open(AutomationNeeds needs) {
    needs_ = std::move(needs);
    const auto model = needs_.model;
    known_ = std::make_shared<KnownTasks>(model->session);
    linkChanged_ = needs_.notifications->linkChanged.observe([this] { known_->forget(); });
    serverChanged_ = model->serverRevision.observe([this](auto) { known_->forget(); });
    AutomationSurfaces surfaces = needs_.surfaces;
    surfaces.readBoards = [model] { return model->refreshBoards(); };
    tasksChanged_ = needs_.notifications->tasksChanged.observe([this] { known_->changed(); });
    surfaces.tasksChanged = [model] { model->refreshDue().detach(); };
    surfaces.wasUsed = [this] { endWhenUnused(); };
    const auto actions = std::make_shared<AutomationActions>(
        AutomationActions{.intents = ParvelaIntents(model->session, *needs_.queue, surfaces.openURL),
                          .session = model->session,
                          .known = known_,
                          .surfaces = surfaces});
    launcherActions_ =
        std::make_unique<LauncherActions>(needs_.application, actions, needs_.showQuickAdd, needs_.frontWindow);
    doors_.open(actions);
    endWhenUnused();
}

bool AutomationHost::isService(GApplication* application) {
    return (g_application_get_flags(application) & G_APPLICATION_IS_SERVICE) != 0;
}

void AutomationHost::endWhenUnused() {
    if (!isService(needs_.application)) return;
    unused_ = MainLoopTimer(unusedPatience, [this] {
        const OfflineQueueStatus& lines = needs_.queue->status().get();
        const bool hasLines = lines.waiting + lines.sending > 0;
        if (doors_.isIdle() && !hasLines && !showsAnything() && !needs_.isReachable()) {
            g_application_quit(needs_.application);
        } else {
            endWhenUnused();
        }
    });
}

}  // namespace parvela
