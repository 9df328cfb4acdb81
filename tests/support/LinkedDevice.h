#pragma once

#include "FakeClock.h"
#include "FakeSecretStore.h"
#include "FakeTransport.h"
#include "MemoryStore.h"

#include <ParvelaKit/ParvelaSession.h>

#include <memory>
#include <string>

namespace parvela::test {

/// What a program on a linked device stands on, pointed at the service of this machine: settings, keyring, clock and
/// network of the test.
struct LinkedDevice {
    static constexpr const char* tokenItem = "app.parvela.token 127.0.0.1:3213";

    LinkedDevice() {
        prefs.setServerMode(ServerConfig::Mode::local);
        link();
    }

    void link(const std::string& token = "tk_secret") const { secrets->secrets[tokenItem] = token; }
    void unlink() const { secrets->secrets.clear(); }
    ParvelaSession session() const { return {prefs, TokenStore(secrets), network.transport(), clock}; }

    std::shared_ptr<MemoryStore> store = std::make_shared<MemoryStore>();
    Preferences prefs{store};
    std::shared_ptr<FakeSecretStore> secrets = std::make_shared<FakeSecretStore>();
    std::shared_ptr<FakeClock> clock = std::make_shared<FakeClock>();
    FakeTransport network;
};

}  // namespace parvela::test
