#pragma once

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/MenuTable.h>

#include <functional>
#include <string>
#include <vector>

#include <gtk/gtk.h>

namespace parvela {

class MainWindow;
class MainWindowController;
class WindowManager;

/// The menu commands of one main window: carries them out on its tab in front, and enables what makes sense there.
class WindowActions {
public:
    WindowActions(MainWindow& window, WindowManager& manager);
    WindowActions(const WindowActions&) = delete;
    WindowActions& operator=(const WindowActions&) = delete;

    /// Enables and checks what fits the tab in front now.
    void update();

private:
    using Handler = std::function<void(MainWindowController&)>;

    void add(const char* name, Handler handler);
    void addForTab();
    void addForWindow();
    void addForText();
    void setBoardView(MainWindowController& tab, int view);
    menuTable::State state() const;

    MainWindow& window_;
    WindowManager& manager_;
    std::vector<Connection> connections_;
};

}  // namespace parvela
