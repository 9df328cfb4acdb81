#include "Windows/WindowActions.h"

#include "Support/DesktopServices.h"
#include "Windows/MainWindow.h"
#include "Windows/MainWindowController.h"
#include "Windows/WindowManager.h"

#include <ParvelaKit/BoardView.h>
#include <ParvelaKit/PageZoom.h>

#include <array>
#include <optional>
#include <string_view>
#include <utility>

namespace parvela {

namespace {

constexpr const char* focusSearchScript =
    "(() => {\n"
    "  const el = document.querySelector('header input[type=\"search\"]') || "
    "document.querySelector('input[type=\"search\"]');\n"
    "  if (el) { el.focus(); if (el.select) el.select(); return true; }\n"
    "  const ev = new KeyboardEvent('keydown', { key: '/', code: 'Slash', bubbles: true, cancelable: true });\n"
    "  (document.activeElement || document.body).dispatchEvent(ev);\n"
    "  return false;\n"
    "})()";

constexpr const char* shortcutsSheetScript =
    "document.body.dispatchEvent(new KeyboardEvent('keydown', { key: '?', bubbles: true }))";

}  // namespace

WindowActions::WindowActions(MainWindow& window, WindowManager& manager) : window_(window), manager_(manager) {
    addForTab();
    addForWindow();
    addForText();
}

void WindowActions::add(const char* name, Handler handler) {
    const auto action = Ref<GSimpleAction>::adopt(g_simple_action_new(name, nullptr));
    connections_.push_back(connect<void(GSimpleAction*, GVariant*)>(
        action.get(), "activate", [this, handler = std::move(handler)](GSimpleAction*, GVariant*) {
            if (auto* const tab = window_.selected()) handler(*tab);
        }));
    g_action_map_add_action(G_ACTION_MAP(window_.get()), G_ACTION(action.get()));
}

void WindowActions::addForTab() {
    using Tab = MainWindowController;
    add("goBack", [](Tab& tab) { webkit_web_view_go_back(tab.webView().get()); });
    add("goForward", [](Tab& tab) { webkit_web_view_go_forward(tab.webView().get()); });
    add("reloadPage", [](Tab& tab) { tab.reload(Tab::Cache::use); });
    add("reloadFromOrigin", [](Tab& tab) { tab.reload(Tab::Cache::bypass); });
    for (const auto& [name, path] : {std::pair{"goHome", "/home"},
                                     {"goMyTasks", "/my"},
                                     {"goBoards", "/boards"},
                                     {"goInbox", "/inbox"},
                                     {"goSearch", "/search"}}) {
        add(name, [path](Tab& tab) { tab.openPath(path); });
    }
    add("zoomIn", [this](Tab& tab) { manager_.setZoom(tab, PageZoom::larger(tab.zoom())); });
    add("zoomOut", [this](Tab& tab) { manager_.setZoom(tab, PageZoom::smaller(tab.zoom())); });
    add("actualSize", [this](Tab& tab) { manager_.setZoom(tab, PageZoom::actualSize); });
    add("newTask", [this](Tab& tab) { manager_.newTask(tab); });
    add("toggleParvelaSidebar", [](Tab& tab) { tab.webView().dispatch(NativeBridge::ToggleSidebar{}); });
    add("requestLink", [](Tab& tab) { tab.webView().dispatch(NativeBridge::RequestLink{}); });
    add("focusWebSearch", [](Tab& tab) { tab.webView().run(focusSearchScript); });
    add("openShortcutsSheet", [](Tab& tab) { tab.webView().run(shortcutsSheetScript); });
    add("copyPageLink", [this](Tab& tab) {
        const auto url = tab.currentURL();
        if (!url) return;
        gdk_clipboard_set_text(gtk_widget_get_clipboard(tab.widget()), url->text().c_str());
        window_.showToast("Link copied");
    });
    add("openInBrowser", [this](Tab& tab) {
        if (const auto url = tab.currentURL()) manager_.desktop().open(*url);
    });
    add("printPage", [this](Tab& tab) {
        const auto print = Ref<WebKitPrintOperation>::adopt(webkit_print_operation_new(tab.webView().get()));
        webkit_print_operation_run_dialog(print.get(), window_.get());
    });

    const auto openBoard = Ref<GSimpleAction>::adopt(g_simple_action_new("openBoard", G_VARIANT_TYPE_STRING));
    connections_.push_back(
        connect<void(GSimpleAction*, GVariant*)>(openBoard.get(), "activate", [this](GSimpleAction*, GVariant* id) {
            auto* const tab = window_.selected();
            if (tab) tab->openPage(BoardView::page(g_variant_get_string(id, nullptr), 0, manager_.server()));
        }));
    g_action_map_add_action(G_ACTION_MAP(window_.get()), G_ACTION(openBoard.get()));

    const auto setView = Ref<GSimpleAction>::adopt(
        g_simple_action_new_stateful("setBoardView", G_VARIANT_TYPE_INT32, g_variant_new_int32(0)));
    connections_.push_back(
        connect<void(GSimpleAction*, GVariant*)>(setView.get(), "activate", [this](GSimpleAction*, GVariant* view) {
            if (auto* const tab = window_.selected()) setBoardView(*tab, g_variant_get_int32(view));
        }));
    g_action_map_add_action(G_ACTION_MAP(window_.get()), G_ACTION(setView.get()));
}

void WindowActions::addForWindow() {
    using Tab = MainWindowController;
    add("newWindowForTab", [this](Tab&) { manager_.openTab(&window_); });
    add("performClose", [this](Tab&) { window_.closeSelectedTab(); });
    add("performMiniaturize", [this](Tab&) { gtk_window_minimize(window_.get()); });
    add("performZoom", [this](Tab&) { window_.place().toggleMaximized(); });
    add("toggleFullScreen", [this](Tab&) { window_.toggleFullScreen(); });
    add("selectNextTab", [this](Tab&) { window_.selectNext(); });
    add("selectPreviousTab", [this](Tab&) { window_.selectPrevious(); });
    const auto addForTabMenu = [this](const char* name, auto operation) {
        add(name, [this, operation](Tab&) {
            if (auto* const tab = window_.tabOfMenu()) operation(*tab);
        });
    };
    addForTabMenu("reloadTab", [](Tab& tab) { tab.reload(Tab::Cache::use); });
    addForTabMenu("moveTabToNewWindow", [this](Tab& tab) { window_.moveToNewWindow(tab); });
    addForTabMenu("closeOtherTabs", [this](Tab& tab) { window_.closeOthers(tab); });
    addForTabMenu("closeTab", [this](Tab& tab) { window_.closeTab(tab); });
    add("showMenu", [this](Tab&) { window_.showMenu(); });
    add("findInPage", [this](Tab&) { window_.showFindBar(); });
}

/// Commands of editing go where the keyboard focus is: into a field of the window itself or into the page.
void WindowActions::addForText() {
    struct Command {
        const char* action;
        const char* fieldAction;
        const char* pageCommand;
    };
    static constexpr std::array<Command, 8> commands{{
        {"undo", "text.undo", WEBKIT_EDITING_COMMAND_UNDO},
        {"redo", "text.redo", WEBKIT_EDITING_COMMAND_REDO},
        {"cut", "clipboard.cut", WEBKIT_EDITING_COMMAND_CUT},
        {"copy", "clipboard.copy", WEBKIT_EDITING_COMMAND_COPY},
        {"paste", "clipboard.paste", WEBKIT_EDITING_COMMAND_PASTE},
        {"pasteAsPlainText", "clipboard.paste", WEBKIT_EDITING_COMMAND_PASTE_AS_PLAIN_TEXT},
        {"delete", "selection.delete", "Delete"},
        {"selectAll", "selection.select-all", WEBKIT_EDITING_COMMAND_SELECT_ALL},
    }};
    for (const Command& command : commands) {
        add(command.action, [this, &command](MainWindowController& tab) {
            GtkWidget* const focus = window_.focus();
            if (GTK_IS_TEXT(focus)) {
                gtk_widget_activate_action(focus, command.fieldAction, nullptr);
            } else {
                webkit_web_view_execute_editing_command(tab.webView().get(), command.pageCommand);
            }
        });
    }
}

void WindowActions::setBoardView(MainWindowController& tab, int view) {
    const auto url = tab.currentURL();
    const ServerConfig& server = manager_.server();
    const auto board = url ? BoardView::boardID(*url, server) : std::nullopt;
    if (board && view >= 0) tab.openPage(BoardView::page(*board, static_cast<std::size_t>(view), server));
}

menuTable::State WindowActions::state() const {
    const auto* const tab = window_.selected();
    if (!tab) return {};
    const auto url = tab->currentURL();
    return menuTable::State{
        .hasWindow = true,
        .hasPage = url.has_value(),
        .canGoBack = webkit_web_view_can_go_back(tab->webView().get()) != FALSE,
        .canGoForward = webkit_web_view_can_go_forward(tab->webView().get()) != FALSE,
        .showsBoard = url && BoardView::boardID(*url, manager_.server()).has_value(),
        .supportsShell = tab->supportsShell(),
    };
}

void WindowActions::update() {
    const menuTable::State now = state();
    for (const menuTable::Menu& menu : menuTable::menus()) {
        for (const menuTable::Item& item : menu.items) {
            if (item.target != menuTable::Target::window || item.action.empty()) continue;
            GAction* const action =
                g_action_map_lookup_action(G_ACTION_MAP(window_.get()), std::string(item.action).c_str());
            if (action) g_simple_action_set_enabled(G_SIMPLE_ACTION(action), menuTable::isEnabled(item.needs, now));
        }
    }
    for (const char* const name : {"selectNextTab", "selectPreviousTab", "moveTabToNewWindow", "closeOtherTabs"}) {
        GAction* const action = g_action_map_lookup_action(G_ACTION_MAP(window_.get()), name);
        g_simple_action_set_enabled(G_SIMPLE_ACTION(action), adw_tab_view_get_n_pages(window_.tabView()) > 1);
    }
    GAction* const view = g_action_map_lookup_action(G_ACTION_MAP(window_.get()), "setBoardView");
    const auto* const tab = window_.selected();
    const auto url = tab ? tab->currentURL() : std::nullopt;
    const auto shown = url ? BoardView::viewIndex(*url, manager_.server()) : std::nullopt;
    // No view is checked while no board is shown.
    g_simple_action_set_state(G_SIMPLE_ACTION(view), g_variant_new_int32(shown ? static_cast<int>(*shown) : -1));
}

}  // namespace parvela
