#include "QuickAdd/SpaceMap.h"

#include "QuickAdd/Characters.h"

#include <array>

namespace parvela::QuickAdd {

namespace {

using Flags = std::array<std::uint8_t, SpaceMap::blockSize>;

/// The low bits of the bytes, each 0 or 1.
std::uint64_t packed(const Flags& flags) {
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < flags.size(); i += 8) {
        std::uint64_t eight = 0;
        for (std::size_t j = 0; j < 8; ++j) eight |= static_cast<std::uint64_t>(flags[i + j]) << (8 * j);
        bits |= (eight * 0x0102040810204080U >> 56U) << i;  // gathers bit 8 j into bit 56 + j
    }
    return bits;
}

}  // namespace

void SpaceMap::read(const char16_t* line, std::size_t length) {
    length_ = length;
    blocks_.resize((length + blockSize - 1) / blockSize);
    for (std::size_t start = 0; start < length; start += blockSize) {
        const char16_t* const block = line + start;
        Flags flags;
        char16_t bits = 0;
        for (std::size_t i = 0; i < blockSize; ++i) {
            const char16_t unit = block[i];
            bits |= unit;
            flags[i] = unit == u' ' || static_cast<char16_t>(unit - u'\t') <= u'\r' - u'\t';
        }
        if (bits > 0x7f) {
            for (std::size_t i = 0; i < blockSize; ++i) flags[i] = isWhiteSpace(block[i]);
        }
        blocks_[start / blockSize] = packed(flags);
    }
}

}  // namespace parvela::QuickAdd
