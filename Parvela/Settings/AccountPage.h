#pragma once

#include "Settings/SettingsEnvironment.h"
#include "Support/Interface.h"

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Observable.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <adwaita.h>

namespace parvela {

/// How this device is linked, and by which token. Never shows more of a token than its hint.
class AccountPage : public std::enable_shared_from_this<AccountPage> {
public:
    static std::shared_ptr<AccountPage> create(std::shared_ptr<const SettingsEnvironment> environment);
    AccountPage(const AccountPage&) = delete;
    AccountPage& operator=(const AccountPage&) = delete;

    AdwPreferencesPage* widget() const noexcept { return page_; }
    /// The window has come to the front.
    void refresh();

    std::function<void(const std::string&)> showToast;

private:
    explicit AccountPage(std::shared_ptr<const SettingsEnvironment> environment);
    void start();
    void showLink();
    void showRow(const char* id, const std::optional<std::string>& text);
    void showTokenCheck();
    void savePasted();
    void askToUnlink();
    void checkKeyring();
    static Task<void> save(std::weak_ptr<AccountPage> self, std::shared_ptr<AppModel> model, std::string text);
    static Task<void> unlink(std::weak_ptr<AccountPage> self, std::shared_ptr<AppModel> model);
    static Task<void> readKeyring(std::weak_ptr<AccountPage> self, std::shared_ptr<SecretStore> secrets,
                                  SecretItem item);
    static Task<void> unlock(std::weak_ptr<AccountPage> self, std::shared_ptr<const SettingsEnvironment> environment,
                             SecretItem item);
    void showKeyring(SecretStatus status);
    SecretItem tokenItem() const;

    std::shared_ptr<const SettingsEnvironment> environment_;
    Interface interface_{"SettingsAccount.ui"};
    AdwPreferencesPage* page_;
    GtkEditable* pasted_;
    bool isUnlinking_ = false;
    std::vector<Connection> connections_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace parvela
