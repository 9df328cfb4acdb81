#pragma once

#include "HotKeys/QuickAddHotKey.h"
#include "Model/AppModel.h"
#include "Model/NotificationCentre.h"
#include "Web/SpellChecking.h"

#include <ParvelaKit/Observable.h>
#include <ParvelaKit/OfflineQueue.h>
#include <ParvelaKit/SecretStore.h>
#include <ParvelaKit/Task.h>
#include <ParvelaKit/Transport.h>
#include <Platform/NotificationService.h>

#include <functional>
#include <memory>
#include <string>

namespace parvela {

/// What the Settings window needs of the application. The functions may be called as long as the window is there.
struct SettingsEnvironment {
    std::shared_ptr<AppModel> model;
    std::shared_ptr<NotificationCentre> notifications;
    std::shared_ptr<SecretStore> secrets;
    Transport transport;
    std::shared_ptr<QuickAddHotKey> hotKey;

    /// Whether a panel shows the tray icon. None where that is not known.
    const Observable<bool>* isInTray = nullptr;

    /// Asks the page to link this device, in a window that comes to the front.
    std::function<void()> requestLink;
    /// Opens a page of the web app.
    std::function<void(const std::string& path)> openPage;
    /// Applies a page zoom to all tabs and remembers it.
    std::function<void(double zoom)> setZoom;
    /// Applies to all pages.
    std::function<void(const SpellChecking&)> setSpellChecking;
    /// The daily summary was switched, or its time has changed.
    std::function<void()> summaryChanged;
    /// Sends a summary now; the result is one English sentence about what became of it. Empty where there are no
    /// summaries.
    std::function<Task<std::string>()> sendSummary;
    /// Whether notifications reach the user. Outlives the window.
    const Observable<NotificationAccess>* notificationAccess = nullptr;
    /// How the lines stand that wait to be added.
    std::function<OfflineQueueStatus()> queueStatus;

    const Preferences& preferences() const { return model->session.prefs(); }
};

/// The pages of the Settings window, in their order.
enum class SettingsPage { server, general, notifications, account, diagnostics };

}  // namespace parvela
