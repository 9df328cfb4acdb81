#include <ParvelaKit/Appcast.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

/// No input is taken for signed, and what a document offers can be shown and opened.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace parvela;
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    // Of the first test vector in RFC 8032, section 7.1; no input here is signed with it.
    static const FeedKey key = FeedKey::fromBase64("11qYAYKxCrfVS/7TyWQHOg7hcvPapiMlrwIaaPcHURo=").value();
    if (appcast::verified(input, key)) std::abort();

    const auto offers = appcast::parse(input);
    if (!offers) return 0;
    for (const auto& offer : *offers) {
        if (offer.page.lowercaseScheme() != "https" || offer.page.lowercaseHost().empty()) std::abort();
        if (AppVersion::parse(offer.version.text()) != offer.version) std::abort();
        for (const char letter : offer.notes) {
            const auto byte = static_cast<unsigned char>(letter);
            if ((byte < 0x20 && letter != '\n' && letter != '\t') || byte == 0x7F) std::abort();
        }
    }
    return 0;
}
