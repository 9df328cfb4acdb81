#include <ParvelaKit/ServerConfig.h>

#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace {

void require(bool promise) {
    if (!promise) std::abort();
}

}  // namespace

/// Typed addresses: normal forms stay as they are, and no path leads out of the web app.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace parvela;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (const auto url = ServerConfig::normalize(text)) {
        require(ServerConfig::normalize(url->text()) == url);
        const ServerConfig config{ServerConfig::Mode::custom, *url, *url};
        require(config.isAppOrigin(*url) && config.isInApp(*url));
        require(config.isAppOrigin(config.appPage("/a b?c")));
    }
    const ServerConfig& local = ServerConfig::local();
    require(local.isAppOrigin(local.appPage(text)));
    require(local.isAppOrigin(local.appPageAt(text)));
    return 0;
}
