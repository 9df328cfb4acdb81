#include "Automation/AutomationDoors.h"

#include "Automation/AutomationObject.h"
#include "Automation/SearchDoors.h"
#include "AutomationInterfaces.h"

#include <algorithm>
#include <utility>

namespace parvela {

struct AutomationDoors::Shared {
    CallGate gate;
    std::shared_ptr<AutomationActions> actions;
};

namespace {

using Call = void (*)(const std::shared_ptr<AutomationActions>&, const std::string&, GVariant*, Invocation);

struct Door {
    const char* object;
    const char* interface;
    Call call;
};

constexpr Door doors[] = {
    {"Automation", automationInterface, AutomationObject::call},
    {"SearchProvider", searchProviderInterface, ShellSearchProvider::call},
    {"Runner", runnerInterface, PlasmaRunner::call},
};

}  // namespace

AutomationDoors::AutomationDoors(const dbus::Bus& bus) : shared_(std::make_shared<Shared>()) {
    if (!bus) return;
    limit_ = dbus::IncomingLimit(bus);
    for (const Door& door : doors) {
        const auto called = [shared = shared_, call = door.call](const std::string& method, GVariant* values,
                                                                 GDBusMethodInvocation* raw) {
            auto ticket = shared->gate.enter();
            const bool isFree = static_cast<bool>(ticket);
            Invocation invocation(raw, std::move(ticket));
            if (!shared->actions) {
                invocation.fail("Busy", "Parvela is starting or ending.");
            } else if (!isFree) {
                invocation.fail("Busy", "Too many calls at once.");
            } else {
                const auto actions = shared->actions;
                call(actions, method, values, std::move(invocation));
                if (actions->surfaces.wasUsed) actions->surfaces.wasUsed();
            }
        };
        objects_.emplace_back(bus, path(door.object), door.interface,
                              dbus::ExportedObject::Handlers{.call = called, .get = AutomationObject::property});
    }
}

AutomationDoors::~AutomationDoors() {
    shared_->actions.reset();
}

void AutomationDoors::open(std::shared_ptr<AutomationActions> actions) {
    shared_->actions = std::move(actions);
}

bool AutomationDoors::isIdle() const {
    return shared_->gate.isIdle();
}

std::string AutomationDoors::path(const char* object) {
    std::string path = "/" PARVELA_APP_ID;
    std::ranges::replace(path, '.', '/');
    std::ranges::replace(path, '-', '_');
    return path + "/" + object;
}

}  // namespace parvela
