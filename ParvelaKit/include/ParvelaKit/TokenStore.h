#pragma once

#include <ParvelaKit/AsyncMutex.h>
#include <ParvelaKit/SecretStore.h>
#include <ParvelaKit/Task.h>
#include <ParvelaKit/Url.h>

#include <memory>
#include <optional>
#include <string>

namespace parvela {

/// Keeps one token per API site in the user's keyring. Copies share the keyring, and their writes never interleave.
///
/// With an access group there are two copies of a token: the application's own, without the group, and one with the
/// group for companion programs.
class TokenStore {
public:
    explicit TokenStore(std::shared_ptr<SecretStore> secrets, std::optional<std::string> accessGroup = std::nullopt)
        : secrets_(std::move(secrets)), accessGroup_(std::move(accessGroup)) {}

    /// The group's copy, else the application's own. Only SecretStatus::notFound says that there is none; a secret that
    /// is no text is SecretStatus::failed. A keyring that does not answer is asked once.
    Task<Result<std::string, SecretStatus>> read(Url apiURL) const;
    /// Succeeds when the application's own copy was written, or else when the group's was.
    Task<SecretStatus> save(std::string token, Url apiURL) const;
    /// Removes both copies; the status is that of the application's own.
    Task<SecretStatus> remove(Url apiURL) const;

    /// Which API site a token belongs to: the host in lower case ("default" without one) and the explicit port.
    static std::string accountKey(const Url& apiURL);

private:
    std::shared_ptr<SecretStore> secrets_;
    std::optional<std::string> accessGroup_;
    AsyncMutex writing_;
};

/// Replaces the secret of `item`, or makes the item when it is missing. The status is that of the last call.
Task<SecretStatus> writeSecret(std::shared_ptr<SecretStore> secrets, SecretItem item, std::string secret,
                               std::string label);

}  // namespace parvela
