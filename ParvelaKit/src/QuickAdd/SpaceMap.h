#pragma once

#include "QuickAdd/SmallBuffer.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace parvela::QuickAdd {

/// One bit for each code unit of a line, set for white space. Finding where a word ends takes one instruction instead
/// of a loop whose length no processor can predict, which is what splitting a line and building a title mostly cost.
class SpaceMap {
public:
    static constexpr std::size_t blockSize = 64;

    /// Reads a line. Whole blocks are read: up to `blockSize` units behind the length must be readable, whatever they
    /// are.
    void read(const char16_t* line, std::size_t length);

    bool isSpace(std::size_t position) const { return (blocks_[position / blockSize] >> (position % blockSize)) & 1U; }
    /// The first white space at `position` or behind it; the length of the line when there is none.
    std::size_t nextSpace(std::size_t position) const { return next(position, 0); }
    /// The first other code unit likewise.
    std::size_t nextText(std::size_t position) const { return next(position, ~std::uint64_t{0}); }

private:
    std::size_t next(std::size_t position, std::uint64_t inversion) const {
        while (position < length_) {
            const std::uint64_t bits = (blocks_[position / blockSize] ^ inversion) >> (position % blockSize);
            if (bits != 0) return std::min(position + static_cast<std::size_t>(std::countr_zero(bits)), length_);
            position = (position / blockSize + 1) * blockSize;
        }
        return length_;
    }

    SmallBuffer<std::uint64_t, 8> blocks_;
    std::size_t length_ = 0;
};

}  // namespace parvela::QuickAdd
