#pragma once

#include "Automation/AutomationActions.h"
#include "Automation/Invocation.h"

#include <memory>
#include <string>

#include <gio/gio.h>

namespace parvela {

/// The interface app.parvela.Automation1: what scripts call. Its description is in
/// interfaces/app.parvela.Automation1.xml.
struct AutomationObject {
    static void call(const std::shared_ptr<AutomationActions>& actions, const std::string& method, GVariant* values,
                     Invocation invocation);
    /// A floating value.
    static GVariant* property(const std::string& name);
};

}  // namespace parvela
