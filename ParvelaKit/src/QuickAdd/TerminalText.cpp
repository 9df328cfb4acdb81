#include "QuickAdd/TerminalText.h"

#include <ParvelaKit/QuickAddReport.h>
#include <ParvelaKit/Text.h>

#include <cstdint>

#include <fmt/format.h>
#include <unicode/uchar.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

namespace parvela::QuickAdd {

namespace {

constexpr std::size_t tabWidth = 8;
constexpr UChar32 emojiPresentation = 0xfe0f;

/// Goes through the code points of valid UTF-8.
class CodePoints {
public:
    explicit CodePoints(std::string_view text) : text_(text) {}

    bool next(UChar32& character) {
        if (position_ >= text_.size()) return false;
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(text_.data());
        U8_NEXT_OR_FFFD(bytes, position_, text_.size(), character);
        return true;
    }

private:
    std::string_view text_;
    std::size_t position_ = 0;
};

bool hasNoShape(UChar32 character) {
    constexpr auto mask =
        U_GC_CC_MASK | U_GC_CF_MASK | U_GC_CS_MASK | U_GC_CN_MASK | U_GC_CO_MASK | U_GC_ZL_MASK | U_GC_ZP_MASK;
    return (U_GET_GC_MASK(character) & mask) != 0;
}

/// A text in place of a character that has no shape.
std::string symbolOf(UChar32 character) {
    constexpr UChar32 firstPicture = 0x2400;  // the control pictures of Unicode, in the order of the characters
    constexpr UChar32 deletePicture = 0x2421;
    std::string symbol;
    const auto append = [&symbol](UChar32 picture) {
        symbol = toUtf8(std::u16string(1, static_cast<char16_t>(picture)));
    };
    if (character < 0x20) {
        append(firstPicture + character);
    } else if (character == 0x7f) {
        append(deletePicture);
    } else {
        symbol = fmt::format("<U+{:04X}>", static_cast<std::uint32_t>(character));
    }
    return symbol;
}

bool isWide(UChar32 character) {
    const int width = u_getIntPropertyValue(character, UCHAR_EAST_ASIAN_WIDTH);
    return width == U_EA_FULLWIDTH || width == U_EA_WIDE;
}

bool isCombining(UChar32 character) {
    return (U_GET_GC_MASK(character) & (U_GC_MN_MASK | U_GC_ME_MASK | U_GC_CF_MASK)) != 0;
}

bool isPrintableAscii(char c) {
    return c >= ' ' && c <= '~';
}

/// Takes the first user-perceived character off the text, which is not empty.
std::string_view takeCharacter(std::string_view& text) {
    // Between two of these characters there is always a boundary, and finding others costs a hundred times as much.
    const bool isAlone = isPrintableAscii(text[0]) && (text.size() == 1 || isPrintableAscii(text[1]));
    const auto cluster = isAlone ? text.substr(0, 1) : firstCharacters(text, 1);
    text.remove_prefix(cluster.size());
    return cluster;
}

/// Columns of one user-perceived character.
std::size_t widthOf(std::string_view cluster) {
    CodePoints points(cluster);
    UChar32 base = 0;
    if (!points.next(base) || isCombining(base)) return 0;
    if (isWide(base)) return 2;
    UChar32 character = 0;
    while (points.next(character)) {
        if (character == emojiPresentation) return 2;
    }
    return 1;
}

std::size_t utf16Length(std::string_view text) {
    CodePoints points(text);
    std::size_t length = 0;
    for (UChar32 character = 0; points.next(character);) length += U16_LENGTH(character);
    return length;
}

}  // namespace

std::size_t displayWidth(std::string_view text) {
    std::size_t width = 0;
    while (!text.empty()) width += widthOf(takeCharacter(text));
    return width;
}

TerminalText forTerminal(std::string_view original, std::size_t column) {
    const std::string valid = toUtf8(toUtf16(original));
    TerminalText shown;
    const std::size_t start = column;
    for (std::string_view rest = valid; !rest.empty();) {
        const auto cluster = takeCharacter(rest);
        shown.columns.insert(shown.columns.end(), utf16Length(cluster), column - start);
        CodePoints points(cluster);
        UChar32 base = 0;
        points.next(base);
        if (base == U'\t') {
            const std::size_t blanks = tabWidth - column % tabWidth;
            shown.text.append(blanks, ' ');
            column += blanks;
        } else if (hasNoShape(base)) {
            // A line break of two characters is one cluster.
            for (UChar32 character = base;;) {
                const auto symbol = symbolOf(character);
                shown.text += symbol;
                column += displayWidth(symbol);
                if (!points.next(character)) break;
            }
        } else {
            shown.text += cluster;
            column += widthOf(cluster);
        }
    }
    shown.columns.push_back(column - start);
    return shown;
}

}  // namespace parvela::QuickAdd
