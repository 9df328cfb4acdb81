#pragma once

#include <ParvelaKit/Result.h>
#include <ParvelaKit/Task.h>

#include <cstdint>
#include <optional>
#include <string>

namespace parvela {

/// Outcome of a secret-store operation: 0 is success, failures are negative. The number is shown to the user, so the
/// values are fixed.
enum class SecretStatus : std::int32_t {
    success = 0,
    noService = -25291,  ///< no secret service answers on this session
    notFound = -25300,   ///< no such item
    locked = -25308,     ///< the keyring is locked and was not unlocked
    failed = -25299,     ///< anything else, such as a reply that makes no sense
};

/// Which secret: a service and account, and optionally the group of programs that share it.
struct SecretItem {
    std::string service;
    std::string account;
    std::optional<std::string> group;

    bool operator==(const SecretItem&) const = default;
};

/// The user's keyring. Asynchronous, because a keyring may have to ask the user for its password.
class SecretStore {
public:
    virtual ~SecretStore() = default;

    /// The secret's bytes. Never prompts: a locked keyring is SecretStatus::locked at once.
    virtual Task<Result<std::string, SecretStatus>> read(SecretItem item) = 0;
    /// Replaces the secret of an item that exists; SecretStatus::notFound when it does not.
    virtual Task<SecretStatus> update(SecretItem item, std::string secret) = 0;
    /// Makes a new item. `label` is what keyring managers show.
    virtual Task<SecretStatus> add(SecretItem item, std::string secret, std::string label) = 0;
    virtual Task<SecretStatus> remove(SecretItem item) = 0;
    /// Lets the keyring ask for its password where that is in the way of reading the item. Success when nothing is
    /// locked any more, whether or not there is such an item.
    virtual Task<SecretStatus> unlock(SecretItem item) = 0;
};

}  // namespace parvela
