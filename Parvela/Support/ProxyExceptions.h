#pragma once

#include <string>
#include <string_view>

namespace parvela {

/// A list of hosts that need no proxy, as the variable "no_proxy" holds it, with this machine's own names added.
std::string withLoopback(std::string_view hosts);

/// Keeps pages of this machine's services from proxies that the environment names. To be called before the process has
/// threads; the web engine's processes inherit it.
void exceptLoopbackFromProxies();

}  // namespace parvela
