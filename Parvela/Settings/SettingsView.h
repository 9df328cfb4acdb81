#pragma once

#include "Settings/SettingsEnvironment.h"
#include "Support/WindowPlacement.h"

#include <ParvelaKit/GLibPtr.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <adwaita.h>

namespace parvela {

class AccountPage;
class DiagnosticsPage;
class GeneralPage;
class NotificationsPage;
class ServerPage;

/// The Settings window. Every change applies at once. Closing only hides it, so that what is typed stays.
class SettingsView {
public:
    SettingsView(GtkApplication* application, SettingsEnvironment environment);
    SettingsView(const SettingsView&) = delete;
    SettingsView& operator=(const SettingsView&) = delete;
    ~SettingsView();

    /// Brings the window to the front, on `page` or where it was left.
    void show(std::optional<SettingsPage> page = std::nullopt);
    /// Called when the user has closed the window.
    std::function<void()> onClosed;

    bool isVisible() const;
    /// It is the window that the user works in.
    bool isActive() const;
    void showToast(const std::string& text);

private:
    void addKeys();
    void select(SettingsPage page);
    void step(int pages);
    void place();
    void refresh();

    std::shared_ptr<const SettingsEnvironment> environment_;
    AdwPreferencesWindow* window_;
    /// Where it stood when it was closed.
    std::optional<WindowPosition> position_;
    bool wasShown_ = false;
    std::shared_ptr<ServerPage> server_;
    std::shared_ptr<GeneralPage> general_;
    std::shared_ptr<NotificationsPage> notifications_;
    std::shared_ptr<AccountPage> account_;
    std::shared_ptr<DiagnosticsPage> diagnostics_;
    std::vector<Connection> connections_;
};

}  // namespace parvela
