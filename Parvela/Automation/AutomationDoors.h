#pragma once

#include "Automation/AutomationActions.h"
#include "Automation/Invocation.h"

#include <Platform/DBus.h>
#include <Platform/IncomingLimit.h>

#include <memory>
#include <string>
#include <vector>

namespace parvela {

/// The application's objects on the session bus by which scripts and the searches of desktops reach it.
///
/// They have to be there before the application takes its bus name, because the bus may have started it for a call that
/// then arrives at once. Calls from before open() are answered with an error.
class AutomationDoors {
public:
    /// Without a bus nothing is exported.
    explicit AutomationDoors(const dbus::Bus& bus);
    AutomationDoors(const AutomationDoors&) = delete;
    AutomationDoors& operator=(const AutomationDoors&) = delete;
    ~AutomationDoors();

    /// From now on calls are carried out.
    void open(std::shared_ptr<AutomationActions> actions);
    /// No call is under way.
    bool isIdle() const;

    /// "/app/parvela/Parvela" for the application's id, and the object's name.
    static std::string path(const char* object);

private:
    struct Shared;
    std::shared_ptr<Shared> shared_;
    dbus::IncomingLimit limit_;
    std::vector<dbus::ExportedObject> objects_;
};

}  // namespace parvela
