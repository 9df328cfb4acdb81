#pragma once

#include <ParvelaKit/AsyncMutex.h>
#include <ParvelaKit/SecretStore.h>
#include <ParvelaKit/Task.h>

#include <functional>
#include <memory>
#include <string>

namespace parvela {

/// The id by which the service knows this installation, kept in the keyring. Copies share what they have read.
class DeviceIdentity {
public:
    using MakeId = std::function<std::string()>;

    explicit DeviceIdentity(std::shared_ptr<SecretStore> secrets, MakeId makeId = randomId);

    /// The stored id. When there is none, a new one is stored and returned. A keyring that cannot be read, or cannot
    /// keep the new id, yields one that serves until a later call finds the keyring open; one that is merely locked is
    /// left as it is.
    Task<std::string> id() const;

    /// A random UUID, 36 characters in upper case (RFC 9562, version 4).
    static std::string randomId();

private:
    struct State;
    static Task<std::string> idOf(std::shared_ptr<State> state);

    std::shared_ptr<State> state_;
};

}  // namespace parvela
