#include <ParvelaKit/Json/Decoder.h>
#include <ParvelaKit/Text.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string message =
        parvela::json::decodeErrorMessage(std::string(reinterpret_cast<const char*>(data), size));
    // It is shown as it is, so it must be text, and it cannot say more than the body did.
    if (!parvela::isValidUtf8(message) || message.size() > size) std::abort();
    return 0;
}
