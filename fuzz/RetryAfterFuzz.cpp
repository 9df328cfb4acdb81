#include <ParvelaKit/ParvelaAPI.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using parvela::ParvelaAPI;
    const std::string_view header(reinterpret_cast<const char*>(data), size);
    const auto seconds = ParvelaAPI::retryAfterSeconds(header);
    // Whatever number was read is the one that its own text means.
    if (seconds && ParvelaAPI::retryAfterSeconds(std::to_string(*seconds)) != seconds) std::abort();
    return 0;
}
