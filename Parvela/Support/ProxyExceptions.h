#pragma once

namespace parvela {

/// Keeps pages of this machine's services from proxies that the environment names. To be called before the process has
/// threads; the web engine's processes inherit it.
void exceptLoopbackFromProxies();

}  // namespace parvela
