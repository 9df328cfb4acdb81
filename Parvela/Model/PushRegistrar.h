#pragma once

#include <ParvelaKit/ParvelaSession.h>
#include <ParvelaKit/Records.h>
#include <ParvelaKit/Task.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace parvela {

/// Keeps the token under which a push service knows this program, and registers it with the Parvela service, so that
/// the service can notify this device. Desktops have no push service yet: there the token stays unknown, and nothing is
/// registered.
///
/// Held by a shared pointer: a registration on its way keeps the registrar alive.
class PushRegistrar : public std::enable_shared_from_this<PushRegistrar> {
public:
    /// What the push service knows of the program.
    struct Program {
        std::string bundleId;  ///< empty when it has none
        /// What the program is entitled to: "production", anything else, or nothing.
        std::optional<std::string> entitledEnvironment{};
    };

    PushRegistrar(ParvelaSession session, Program program)
        : session_(std::move(session)), program_(std::move(program)) {}

    const std::optional<std::string>& deviceToken() const noexcept { return deviceToken_; }

    /// A push service has given out a token: hexadecimal text, two digits a byte.
    void setDeviceToken(std::string hex);

    /// Registers the token, if there is one and the device is linked. A failure is ignored; the next launch or link
    /// tries again.
    Task<void> sync();

private:
    PushRegistration registration() const;

    ParvelaSession session_;
    Program program_;
    std::optional<std::string> deviceToken_;
};

}  // namespace parvela
