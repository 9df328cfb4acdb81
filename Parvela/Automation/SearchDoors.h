#pragma once

#include "Automation/AutomationActions.h"
#include "Automation/Invocation.h"

#include <memory>
#include <string>

#include <gio/gio.h>

namespace parvela {

/// The search of the GNOME shell (org.gnome.Shell.SearchProvider2).
struct ShellSearchProvider {
    static void call(const std::shared_ptr<AutomationActions>& actions, const std::string& method, GVariant* values,
                     Invocation invocation);
};

/// A runner of Plasma's KRunner (org.kde.krunner1).
struct PlasmaRunner {
    static void call(const std::shared_ptr<AutomationActions>& actions, const std::string& method, GVariant* values,
                     Invocation invocation);
};

}  // namespace parvela
