#include <ParvelaKit/DeepLink.h>
#include <ParvelaKit/OAuthHandoff.h>
#include <ParvelaKit/ServerConfig.h>

#include <cstdint>
#include <cstdlib>
#include <string_view>

/// Whatever a URL asks for can be written as a link and read back, and a sign-in callback stays within the web app.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace parvela;
    const auto url = Url::parse({reinterpret_cast<const char*>(data), size});
    if (!url) return 0;
    if (const auto link = DeepLink::parse(*url)) {
        if (DeepLink::parse(link->url()) != link) std::abort();
    }
    const Url& app = ServerConfig::local().appURL;
    if (!ServerConfig::local().isAppOrigin(OAuthHandoff::startURL(app, *url))) std::abort();
    if (const auto page = OAuthHandoff::completionURL(app, *url)) {
        if (!ServerConfig::local().isAppOrigin(*page)) std::abort();
    }
    return 0;
}
