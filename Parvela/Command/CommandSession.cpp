#include "CommandSession.h"

#include <ParvelaKit/BuildInfo.h>
#include <Platform/LibsecretStore.h>
#include <Platform/SoupTransport.h>

namespace parvela {

CommandSession::CommandSession(const Console& console)
    : defaults(std::make_shared<JsonDefaultsStore>(JsonDefaultsStore::defaultFile(),
                                                   [console](const std::string& message) { console.warn(message); })),
      clock(std::make_shared<SystemClock>()),
      session(Preferences(defaults), TokenStore(std::make_shared<LibsecretStore>(), BuildInfo::keychainGroup()),
              SoupTransport::shared(), clock) {
    if (defaults->warning()) console.warn(*defaults->warning());
}

}  // namespace parvela
