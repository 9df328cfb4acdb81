#pragma once

#include "Support/Interface.h"

#include <ParvelaKit/GLibPtr.h>

#include <functional>
#include <vector>

#include <gtk/gtk.h>
#include <webkit/webkit.h>

namespace parvela {

class MainWindowController;

/// Finds text in the page of the tab in front, as it is typed. Enter goes on, Shift+Enter back, Escape ends.
class FindBar {
public:
    /// `interface` is the window's layout; `tab` names the tab in front.
    FindBar(const Interface& interface, std::function<MainWindowController*()> tab);
    FindBar(const FindBar&) = delete;
    FindBar& operator=(const FindBar&) = delete;

    void show();
    void hide();

private:
    WebKitFindController* controller();
    void search();
    void showCount(const char* text);

    GtkSearchBar* bar_;
    GtkEditable* field_;
    GtkLabel* count_;
    std::function<MainWindowController*()> tab_;
    std::vector<Connection> connections_;
    std::vector<Connection> results_;
    Ref<WebKitFindController> searched_;
};

}  // namespace parvela
