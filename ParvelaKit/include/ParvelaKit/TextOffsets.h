#pragma once

#include <cstddef>
#include <string_view>

namespace parvela {

/// Translates places in one UTF-8 text between its UTF-16 code units, its Unicode characters and its bytes. Places
/// behind the end count as the end; a place inside a character counts as its start. The text must outlive this.
class TextOffsets {
public:
    explicit TextOffsets(std::string_view text) : text_(text) {}

    std::size_t byteAtUtf16(std::size_t offset) const;
    std::size_t characterAtUtf16(std::size_t offset) const;
    std::size_t utf16AtCharacter(std::size_t offset) const;
    std::size_t utf16AtByte(std::size_t offset) const;

private:
    std::string_view text_;
};

}  // namespace parvela
