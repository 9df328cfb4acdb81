#pragma once

#include "Automation/AutomationHost.h"
#include "HotKeys/QuickAddHotKey.h"
#include "Menu/MainMenu.h"
#include "Model/AppModel.h"
#include "Model/Notifier.h"
#include "Model/PushRegistrar.h"
#include "Notifications/DesktopPresence.h"
#include "Settings/SettingsView.h"
#include "Support/AccessibleWindows.h"
#include "Support/DesktopServices.h"
#include "Support/PlainEdges.h"
#include "Support/WaitingLines.h"
#include "Tray/StatusItemController.h"
#include "URLRouter.h"
#include "Update/UpdateController.h"
#include "Windows/WindowManager.h"

#include <ParvelaKit/DeviceIdentity.h>
#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Task.h>
#include <ParvelaKit/Url.h>
#include <Platform/JsonDefaultsStore.h>
#include <Platform/XdgPaths.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <adwaita.h>

namespace parvela {

/// The application: owner of every long-lived object. Builds them at launch and routes what reaches the process (URLs,
/// activation, the end) to them.
///
/// One instance runs for each session; a second start hands its URLs to the first and ends.
class AppDelegate {
public:
    /// `updates` is where new versions are announced; none: they are not looked for.
    explicit AppDelegate(std::optional<UpdateFeed> updates);
    AppDelegate(const AppDelegate&) = delete;
    AppDelegate& operator=(const AppDelegate&) = delete;
    ~AppDelegate();

    /// Runs until the user quits; returns the exit status.
    int run(int argc, char** argv);

private:
    void connectApplication();
    int handleLocalOptions(GVariantDict* options);
    /// The toolkit has its display, and nothing more: what takes longest begins.
    void willFinishLaunching();
    void didFinishLaunching();
    void activated();
    void opened(GFile** files, int count);
    void willTerminate();
    Task<void> readDevice();
    Task<void> keepDevice();
    Task<void> readCredentials();
    Task<void> readSettings();
    void lastWindowClosed();
    void offerSafeRenderer();
    /// Whether the user can reach the program without a window. If not, closing the last window ends the program, and
    /// hiding it minimises.
    bool isReachableWithoutWindow() const { return statusItem_ && statusItem_->isInTray().get(); }
    void startStatusItem();
    void startHotKey();
    void trayChanged();
    void openAutomation();
    void addActions();
    void addAction(const char* name, std::function<void()> handler);
    void showAbout();
    /// `page` is none for where the window was left.
    void showSettings(std::optional<SettingsPage> page = std::nullopt);
    void settingsClosed();
    SettingsEnvironment settingsEnvironment();
    void openPath(const std::string& path);
    void addUpdates();
    void showQuickAdd();
    void requestLink();
    void hide();
    void newTask();
    void quit();
    void showToast(const std::string& text);
    /// Shows a message to the user: on the front window, or by itself.
    void showAlert(const std::string& message, const std::string& informative);
    /// The front window while it can be seen; a dialog stands on it.
    GtkWindow* visibleWindow() const;
    void notify(UserNotification notification);

    Ref<AdwApplication> application_;
    XdgPaths paths_;
    std::shared_ptr<JsonDefaultsStore> defaults_;
    std::shared_ptr<SecretStore> secrets_;
    std::shared_ptr<NotificationCentre> notifications_;
    DeviceIdentity device_;
    std::shared_ptr<AppModel> model_;
    std::shared_ptr<const Clock> clock_;
    DefaultApplications desktop_;
    std::optional<PlainEdges> plainEdges_;
    std::optional<AccessibleWindows> accessibleWindows_;
    std::unique_ptr<WindowManager> windows_;
    std::shared_ptr<WaitingLines> waitingLines_;
    std::unique_ptr<StatusItemController> statusItem_;
    std::unique_ptr<MainMenu> menu_;
    std::unique_ptr<SettingsView> settings_;
    std::shared_ptr<URLRouter> router_;
    std::shared_ptr<PushRegistrar> push_;
    std::unique_ptr<DesktopPresence> presence_;
    std::shared_ptr<QuickAddHotKey> hotKey_;
    Subscription hotKeyShown_;
    std::optional<UpdateFeed> updateFeed_;
    std::shared_ptr<UpdateController> updates_;
    std::unique_ptr<AutomationHost> automation_;
    Subscription openURL_;
    Subscription showQuickAdd_;
    Subscription linkChanged_;
    Subscription serverChanged_;
    Subscription trayChanged_;
    MainLoopTimer trayPatience_;
    MainLoopTimer devicePatience_;
    GtkWidget* alert_ = nullptr;  ///< the one that is shown
    Connection alertGone_;
    std::vector<Connection> connections_;
    bool startsInBackground_ = false;
    bool startsWithNewTask_ = false;
    bool startsAgain_ = false;
    bool endsWithSettings_ = false;
};

}  // namespace parvela
