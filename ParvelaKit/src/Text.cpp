#include <ParvelaKit/Text.h>

#include <algorithm>
#include <memory>

#include <unicode/brkiter.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utext.h>
#include <unicode/utf8.h>

namespace parvela {

namespace {

/// `isBlank` is asked for each code point from both ends.
template <class Predicate>
std::string_view trimmedOf(std::string_view text, Predicate isBlank) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    std::int32_t start = 0;
    auto end = static_cast<std::int32_t>(text.size());
    while (start < end) {
        std::int32_t next = start;
        UChar32 character = 0;
        U8_NEXT(bytes, next, end, character);
        if (character < 0 || !isBlank(character)) break;
        start = next;
    }
    while (start < end) {
        std::int32_t previous = end;
        UChar32 character = 0;
        U8_PREV(bytes, start, previous, character);
        if (character < 0 || !isBlank(character)) break;
        end = previous;
    }
    return text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start));
}

/// Calls `visit(end)` with the byte offset after each user-perceived character until it returns false.
template <class Visitor>
void forEachCharacter(std::string_view text, Visitor visit) {
    UErrorCode status = U_ZERO_ERROR;
    // Making an iterator costs far more than using one; each thread keeps its own.
    thread_local const std::unique_ptr<icu::BreakIterator> boundaries(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    UText source = UTEXT_INITIALIZER;
    utext_openUTF8(&source, text.data(), static_cast<std::int64_t>(text.size()), &status);
    if (U_FAILURE(status) || !boundaries) std::abort();  // ICU without its data cannot run this program
    boundaries->setText(&source, status);
    for (auto end = boundaries->next(); end != icu::BreakIterator::DONE; end = boundaries->next()) {
        if (!visit(static_cast<std::size_t>(end))) break;
    }
    utext_close(&source);
}

bool isAscii(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

}  // namespace

bool isValidUtf8(std::string_view text) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto size = static_cast<std::int32_t>(text.size());
    for (std::int32_t i = 0; i < size;) {
        UChar32 character = 0;
        U8_NEXT(bytes, i, size, character);
        if (character < 0) return false;
    }
    return true;
}

std::u16string toUtf16(std::string_view text) {
    const auto converted =
        icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
    return {converted.getBuffer(), static_cast<std::size_t>(converted.length())};
}

std::string toUtf8(std::u16string_view text) {
    std::string converted;
    icu::UnicodeString(false, text.data(), static_cast<std::int32_t>(text.size())).toUTF8String(converted);
    return converted;
}

std::string_view trimmed(std::string_view text) {
    return trimmedOf(text, [](UChar32 character) { return u_isUWhiteSpace(character) != 0; });
}

std::string_view trimmedBlanks(std::string_view text) {
    return trimmedOf(text, [](UChar32 character) { return character == U' ' || character == U'\t'; });
}

std::string lowercased(std::string_view text) {
    if (isAscii(text)) return asciiLowercased(text);
    auto converted =
        icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
    converted.toLower(icu::Locale::getRoot());
    std::string lower;
    converted.toUTF8String(lower);
    return lower;
}

std::string asciiLowercased(std::string_view text) {
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return lower;
}

bool equalsIgnoringAsciiCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && asciiLowercased(a) == asciiLowercased(b);
}

std::size_t characterCount(std::string_view text) {
    std::size_t count = 0;
    forEachCharacter(text, [&count](std::size_t) {
        ++count;
        return true;
    });
    return count;
}

std::string_view firstCharacters(std::string_view text, std::size_t count) {
    if (count == 0) return {};
    std::size_t length = 0;
    forEachCharacter(text, [&](std::size_t end) {
        length = end;
        return --count > 0;
    });
    return text.substr(0, length);
}

}  // namespace parvela
