#pragma once

#include "Support/Interface.h"
#include "Web/PagePermissions.h"

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Preferences.h>

#include <vector>

#include <adwaita.h>

namespace parvela {

/// The remembered answers to what pages asked for, each with a way to forget it.
class PermissionsGroup {
public:
    PermissionsGroup(const Interface& interface, Preferences preferences);
    PermissionsGroup(const PermissionsGroup&) = delete;
    PermissionsGroup& operator=(const PermissionsGroup&) = delete;

    void refresh();

private:
    void add(const PagePermissions::Answer& answer);
    void forget(const PagePermissions::Answer& answer);

    Preferences preferences_;
    AdwPreferencesGroup* group_;
    GtkWidget* none_;
    std::vector<PagePermissions::Answer> answers_;
    std::vector<GtkWidget*> rows_;
    std::vector<Connection> connections_;
};

}  // namespace parvela
