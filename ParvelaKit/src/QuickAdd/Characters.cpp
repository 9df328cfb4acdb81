#include "QuickAdd/Characters.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <stdexcept>

#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>

namespace parvela::QuickAdd {

namespace {

constexpr std::size_t blockSize = 16;

/// Number of leading bytes below 0x80, rounded down to whole blocks when there are others.
std::size_t asciiPrefix(std::string_view text) {
    std::size_t i = 0;
    for (; i + 8 <= text.size(); i += 8) {
        std::uint64_t block = 0;
        std::memcpy(&block, text.data() + i, 8);
        if (block & 0x8080808080808080U) return i;
    }
    while (i < text.size() && static_cast<unsigned char>(text[i]) < 0x80) ++i;
    return i;
}

void widen(const char* from, char16_t* to, std::size_t length) {
    const bool isDone = forEachBlock<blockSize>(length, [&](std::size_t position) {
        std::array<unsigned char, blockSize> block{};
        std::memcpy(block.data(), from + position, blockSize);
        for (std::size_t i = 0; i < blockSize; ++i) to[position + i] = block[i];
    });
    for (std::size_t i = 0; !isDone && i < length; ++i) to[i] = static_cast<unsigned char>(from[i]);
}

void narrow(const char16_t* from, char* to, std::size_t length) {
    const bool isDone = forEachBlock<blockSize>(length, [&](std::size_t position) {
        std::array<char, blockSize> block{};
        for (std::size_t i = 0; i < blockSize; ++i) block[i] = static_cast<char>(from[position + i]);
        std::memcpy(to + position, block.data(), blockSize);
    });
    for (std::size_t i = 0; !isDone && i < length; ++i) to[i] = static_cast<char>(from[i]);
}

/// ICU fails here only without its data or without memory; neither leaves a program that could go on.
void expect(UErrorCode status) {
    if (U_FAILURE(status)) std::abort();
}

std::int32_t length(std::u16string_view text) {
    if (text.size() > std::numeric_limits<std::int32_t>::max()) throw std::length_error("text too long");
    return static_cast<std::int32_t>(text.size());
}

}  // namespace

bool isWhiteSpaceOutsideAscii(char16_t unit) {
    return u_isUWhiteSpace(unit) != 0;
}

bool isAscii(std::u16string_view text) {
    unsigned bits = 0;
    const bool isDone = forEachBlock<blockSize>(text.size(), [&](std::size_t position) {
        for (std::size_t i = 0; i < blockSize; ++i) bits |= text[position + i];
    });
    for (std::size_t i = 0; !isDone && i < text.size(); ++i) bits |= text[i];
    return bits < 0x80;
}

std::u16string_view trimmed(std::u16string_view text) {
    while (!text.empty() && isWhiteSpace(text.front())) text.remove_prefix(1);
    while (!text.empty() && isWhiteSpace(text.back())) text.remove_suffix(1);
    return text;
}

void decodeUtf8(std::string_view text, Utf16Buffer& decoded) {
    if (text.size() > std::numeric_limits<std::int32_t>::max()) throw std::length_error("line too long");
    const std::size_t ascii = asciiPrefix(text);
    decoded.resize(text.size());
    widen(text.data(), decoded.data(), ascii);
    if (ascii == text.size()) return;
    std::int32_t converted = 0;
    UErrorCode status = U_ZERO_ERROR;
    const auto rest = static_cast<std::int32_t>(text.size() - ascii);
    u_strFromUTF8WithSub(decoded.data() + ascii, rest, &converted, text.data() + ascii, rest, 0xfffd, nullptr, &status);
    expect(status);
    decoded.resize(ascii + static_cast<std::size_t>(converted));
}

void appendUtf8(std::string& text, std::u16string_view appended) {
    const std::size_t before = text.size();
    if (isAscii(appended)) {
        text.resize_and_overwrite(before + appended.size(), [&](char* data, std::size_t) {
            narrow(appended.data(), data + before, appended.size());
            return before + appended.size();
        });
        return;
    }
    text.resize(before + appended.size() * 3);
    std::int32_t converted = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strToUTF8WithSub(text.data() + before, length(appended) * 3, &converted, appended.data(), length(appended),
                       0xfffd, nullptr, &status);
    expect(status);
    text.resize(before + static_cast<std::size_t>(converted));
}

std::u16string utf16(std::string_view text) {
    Utf16Buffer decoded;
    decodeUtf8(text, decoded);
    return {decoded.data(), decoded.size()};
}

std::string utf8(std::u16string_view text) {
    std::string converted;
    appendUtf8(converted, text);
    return converted;
}

std::u16string lowercased(std::u16string_view text) {
    std::u16string lower(text.size(), u'\0');
    if (isAscii(text)) {
        std::ranges::transform(text, lower.begin(), asciiLower);
        return lower;
    }
    UErrorCode status = U_ZERO_ERROR;
    auto needed = u_strToLower(lower.data(), length(lower), text.data(), length(text), "", &status);
    if (status == U_BUFFER_OVERFLOW_ERROR) {
        lower.resize(static_cast<std::size_t>(needed));
        status = U_ZERO_ERROR;
        needed = u_strToLower(lower.data(), length(lower), text.data(), length(text), "", &status);
    }
    expect(status);
    lower.resize(static_cast<std::size_t>(needed));
    return lower;
}

std::u16string folded(std::u16string_view text) {
    auto lower = lowercased(text);
    UErrorCode status = U_ZERO_ERROR;
    const auto* composition = unorm2_getNFCInstance(&status);
    if (isAscii(lower) || unorm2_isNormalized(composition, lower.data(), length(lower), &status)) return lower;
    std::u16string composed(lower.size() * 3, u'\0');  // no character grows by more than this factor in NFC
    const auto written =
        unorm2_normalize(composition, lower.data(), length(lower), composed.data(), length(composed), &status);
    expect(status);
    composed.resize(static_cast<std::size_t>(written));
    return composed;
}

}  // namespace parvela::QuickAdd
