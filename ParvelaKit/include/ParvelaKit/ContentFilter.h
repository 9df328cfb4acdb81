#pragma once

#include <ParvelaKit/ServerConfig.h>

#include <string>

namespace parvela {

/// The part of NavigationPolicy that needs to know whether the main frame navigates, as rules that WebKit compiles and
/// applies before any network traffic: documents of main frames are blocked unless they are in the app, and so are the
/// pages that start a sign-in with an outside provider. A JSON list in the form of WebKit's content blockers.
std::string contentFilterRules(const ServerConfig& server);

}  // namespace parvela
