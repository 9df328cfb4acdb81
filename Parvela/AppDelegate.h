#pragma once

#include "Menu/MainMenu.h"
#include "Model/AppModel.h"
#include "Model/Notifier.h"
#include "Support/DesktopServices.h"
#include "Support/WaitingLines.h"
#include "URLRouter.h"
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
    AppDelegate();
    AppDelegate(const AppDelegate&) = delete;
    AppDelegate& operator=(const AppDelegate&) = delete;
    ~AppDelegate();

    /// Runs until the user quits; returns the exit status.
    int run(int argc, char** argv);

    /// Whether the user can reach the program without a window, as by an icon in the panel. Not set means no: closing
    /// the last window then ends the program, and hiding it minimises.
    std::function<bool()> isReachableWithoutWindow;

    /// Shows a message to the user: on the front window, or by itself.
    void showAlert(const std::string& message, const std::string& informative);

private:
    int handleLocalOptions(GVariantDict* options);
    void didFinishLaunching();
    void activated();
    void opened(GFile** files, int count);
    void willTerminate();
    Task<void> readDevice();
    Task<void> readCredentials();
    Task<void> readSettings();
    void lastWindowClosed();
    void offerSafeRenderer();
    bool isReachable() const { return isReachableWithoutWindow && isReachableWithoutWindow(); }
    void addActions();
    void addAction(const char* name, std::function<void()> handler);
    void showAbout();
    void showSettings();
    void showQuickAdd();
    void hide();
    void newTask();
    void showToast(const std::string& text);
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
    std::unique_ptr<WindowManager> windows_;
    std::unique_ptr<MainMenu> menu_;
    std::shared_ptr<URLRouter> router_;
    std::shared_ptr<WaitingLines> waitingLines_;
    Subscription openURL_;
    Subscription showQuickAdd_;
    Subscription linkChanged_;
    MainLoopTimer devicePatience_;
    std::vector<Connection> connections_;
    bool startsInBackground_ = false;
    bool startsAgain_ = false;
};

}  // namespace parvela
