#pragma once

#include <ParvelaKit/Task.h>
#include <Platform/DBus.h>
#include <Platform/Diagnostics.h>

#include <string>
#include <vector>

namespace parvela::diagnostics {

Diagnostic versions();
Diagnostic sessionType();
Diagnostic renderer(bool isSafe);
/// Whether settings and data can be written.
Diagnostic files();
Diagnostic links(const std::string& applicationId);
Diagnostic startAtLogin(const std::string& applicationId);

/// What stands on the session bus; without one there is a single row that says so.
Task<std::vector<Diagnostic>> busServices(std::string applicationId);

}  // namespace parvela::diagnostics
