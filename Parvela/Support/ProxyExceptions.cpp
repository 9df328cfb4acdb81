#include "Support/ProxyExceptions.h"

#include <array>
#include <cstdlib>
#include <string>
#include <string_view>

namespace parvela {

namespace {

/// As GLib's resolver, by way of libproxy, understands them.
constexpr std::string_view loopback = "localhost,127.0.0.0/8,[::1]";

std::string withLoopback(std::string_view hosts) {
    std::string all(hosts);
    if (!all.empty()) all += ',';
    return all += loopback;
}

}  // namespace

void exceptLoopbackFromProxies() {
    // The lower-case name wins where both are set.
    for (const char* name : std::array{"no_proxy", "NO_PROXY"}) {
        const char* const hosts = std::getenv(name);
        if (!hosts) continue;
        setenv("no_proxy", withLoopback(hosts).c_str(), 1);
        return;
    }
    setenv("no_proxy", withLoopback("").c_str(), 1);
}

}  // namespace parvela
