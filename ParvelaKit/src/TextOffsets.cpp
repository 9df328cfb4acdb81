#include <ParvelaKit/TextOffsets.h>

#include <cstdint>

#include <unicode/utf16.h>
#include <unicode/utf8.h>

namespace parvela {

namespace {

struct Place {
    std::size_t byte = 0;
    std::size_t character = 0;
    std::size_t utf16 = 0;
};

/// The last place at or before `offset`, which is counted as `counted` says.
Place placeAt(std::string_view text, std::size_t Place::* counted, std::size_t offset) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    Place place;
    while (place.byte < text.size() && place.*counted < offset) {
        Place next = place;
        UChar32 character = 0;
        U8_NEXT_OR_FFFD(bytes, next.byte, text.size(), character);
        ++next.character;
        next.utf16 += U16_LENGTH(character);
        if (next.*counted > offset) break;
        place = next;
    }
    return place;
}

}  // namespace

std::size_t TextOffsets::byteAtUtf16(std::size_t offset) const {
    return placeAt(text_, &Place::utf16, offset).byte;
}

std::size_t TextOffsets::characterAtUtf16(std::size_t offset) const {
    return placeAt(text_, &Place::utf16, offset).character;
}

std::size_t TextOffsets::utf16AtCharacter(std::size_t offset) const {
    return placeAt(text_, &Place::character, offset).utf16;
}

std::size_t TextOffsets::utf16AtByte(std::size_t offset) const {
    return placeAt(text_, &Place::byte, offset).utf16;
}

}  // namespace parvela
