#pragma once

#include "Settings/HotKeyRows.h"
#include "Settings/PermissionsGroup.h"
#include "Settings/SettingsEnvironment.h"
#include "Settings/SpellingRows.h"
#include "Support/Interface.h"

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Observable.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <adwaita.h>

namespace parvela {

/// Quick add's board, the start at login, how pages look and are checked, and what they were allowed.
class GeneralPage {
public:
    static std::shared_ptr<GeneralPage> create(std::shared_ptr<const SettingsEnvironment> environment);
    GeneralPage(const GeneralPage&) = delete;
    GeneralPage& operator=(const GeneralPage&) = delete;

    AdwPreferencesPage* widget() const noexcept { return page_; }
    /// The window has come to the front.
    void refresh();

    std::function<void(const std::string&)> showToast;

private:
    explicit GeneralPage(std::shared_ptr<const SettingsEnvironment> environment);
    void connectBoards();
    void connectStart();
    void connectZoom();
    void connectGraphics();
    void showBoards();
    void choseBoard();
    void showStart();
    void showTray();
    void changeStart(bool atLogin, bool hidden);
    void changeZoom(double zoom);
    void showZoom();

    std::shared_ptr<const SettingsEnvironment> environment_;
    Interface interface_{"SettingsGeneral.ui"};
    AdwPreferencesPage* page_;
    AdwComboRow* board_;
    GtkSwitch* atLogin_;
    GtkSwitch* hidden_;
    /// Controls are being set to what holds, not by the user.
    bool filling_ = false;
    std::shared_ptr<HotKeyRows> hotKey_;
    SpellingRows spelling_;
    PermissionsGroup permissions_;
    std::vector<Connection> connections_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace parvela
