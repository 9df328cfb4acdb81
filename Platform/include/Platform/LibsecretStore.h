#pragma once

#include <ParvelaKit/SecretStore.h>

#include <chrono>
#include <memory>

namespace parvela {

/// The desktop's keyring, through the Secret Service interface.
///
/// An item is found by its attributes "service", "account" and, when it is shared, "group". An item without a group is
/// never mistaken for one with a group. read() never asks the user anything. The other operations let the keyring ask
/// for its password, or to be made, when they need it; a refused question is SecretStatus::locked.
///
/// A keyring that does not answer in time is left alone and its late answer ignored, never cancelled: gnome-keyring
/// does not survive the cancelling of a question. Requires a turning main context on the calling thread.
class LibsecretStore : public SecretStore {
public:
    struct Patience {
        std::chrono::milliseconds service{std::chrono::seconds{5}};
        /// Long enough for a person to find and type a password.
        std::chrono::milliseconds question{std::chrono::minutes{2}};
    };

    LibsecretStore() : LibsecretStore(Patience{}) {}
    explicit LibsecretStore(Patience patience) : patience_(patience) {}

    Task<Result<std::string, SecretStatus>> read(SecretItem item) override;
    Task<SecretStatus> update(SecretItem item, std::string secret) override;
    Task<SecretStatus> add(SecretItem item, std::string secret, std::string label) override;
    Task<SecretStatus> remove(SecretItem item) override;
    Task<SecretStatus> unlock(SecretItem item) override;

private:
    Patience patience_;
};

}  // namespace parvela
