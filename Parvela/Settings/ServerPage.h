#pragma once

#include "Settings/Reachability.h"
#include "Settings/ServerForm.h"
#include "Settings/SettingsEnvironment.h"
#include "Support/Interface.h"

#include <memory>
#include <stop_token>
#include <vector>

#include <adwaita.h>

namespace parvela {

/// Which service is used: hosted, on this computer, or at typed addresses, and whether it can be reached.
///
/// A choice applies at once. A typed address applies on Return or when its field is left, because every start of an
/// address is an address too; an invalid one stays in the field and out of use.
class ServerPage : public std::enable_shared_from_this<ServerPage> {
public:
    static std::shared_ptr<ServerPage> create(std::shared_ptr<const SettingsEnvironment> environment);
    ServerPage(const ServerPage&) = delete;
    ServerPage& operator=(const ServerPage&) = delete;
    ~ServerPage();

    AdwPreferencesPage* widget() const noexcept { return page_; }
    /// The window has come to the front.
    void refresh();

private:
    struct Site {
        AdwActionRow* row;
        GtkSpinner* spinner;
        GtkImage* image;
    };

    explicit ServerPage(std::shared_ptr<const SettingsEnvironment> environment);
    void connectMode(const char* id, ServerConfig::Mode mode);
    void connectField(AdwEntryRow* row, void (ServerForm::*store)(std::string));
    void chose(ServerConfig::Mode mode);
    void apply();
    void showForm();
    void showInUse();
    void check();
    static Task<void> switchServer(std::shared_ptr<AppModel> model, ServerConfig config);
    static Task<void> checkSite(std::weak_ptr<ServerPage> self, Task<Reachability> answer, std::stop_token stop,
                                Site ServerPage::* site, std::string address);
    static void showState(const Site& site, const std::string& address, const Reachability* state);

    std::shared_ptr<const SettingsEnvironment> environment_;
    Interface interface_{"SettingsServer.ui"};
    ServerForm form_;
    AdwPreferencesPage* page_;
    AdwEntryRow* appURL_;
    AdwEntryRow* apiURL_;
    Site app_;
    Site api_;
    bool filling_ = false;
    std::stop_source checking_;
    std::vector<Connection> connections_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace parvela
