#pragma once

#include "Settings/SettingsEnvironment.h"
#include "Support/Interface.h"

#include <ParvelaKit/GLibPtr.h>
#include <Platform/Diagnostics.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <adwaita.h>

namespace parvela {

/// What Parvela needs of this desktop and how it stands, as `parvela doctor` tells it; looked at anew each time the
/// page is shown.
class DiagnosticsPage : public std::enable_shared_from_this<DiagnosticsPage> {
public:
    static std::shared_ptr<DiagnosticsPage> create(std::shared_ptr<const SettingsEnvironment> environment);
    DiagnosticsPage(const DiagnosticsPage&) = delete;
    DiagnosticsPage& operator=(const DiagnosticsPage&) = delete;

    AdwPreferencesPage* widget() const noexcept { return page_; }

    std::function<void(const std::string&)> showToast;

private:
    explicit DiagnosticsPage(std::shared_ptr<const SettingsEnvironment> environment);
    void start();
    void check();
    static Task<void> run(std::weak_ptr<DiagnosticsPage> self, Diagnostics::Subject subject);
    void show(std::vector<Diagnostic> rows);
    void copy();

    std::shared_ptr<const SettingsEnvironment> environment_;
    Interface interface_{"SettingsDiagnostics.ui"};
    AdwPreferencesPage* page_;
    std::vector<Diagnostic> rows_;
    std::vector<GtkWidget*> shown_;  ///< owned by the page
    bool isChecking_ = false;
    std::vector<Connection> connections_;
};

}  // namespace parvela
