#include <ParvelaKit/DownloadName.h>
#include <ParvelaKit/Text.h>

#include <fmt/format.h>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace parvela {

namespace {

/// File systems take 255 bytes; the engine adds ".wkdownload" while it writes.
constexpr std::size_t maximumBytes = 255 - std::string_view(".wkdownload").size();
/// Longer ones are no extensions that a program would know.
constexpr std::size_t maximumExtensionBytes = 64;

/// Control characters and marks that reorder text: a name must read as what it is.
bool isInvisible(UChar32 character) {
    const auto kind = u_charType(character);
    return kind == U_CONTROL_CHAR || kind == U_LINE_SEPARATOR || kind == U_PARAGRAPH_SEPARATOR ||
           u_hasBinaryProperty(character, UCHAR_BIDI_CONTROL) != 0;
}

std::string cleaned(std::string_view suggested) {
    std::string name;
    const auto size = static_cast<std::int32_t>(suggested.size());
    for (std::int32_t i = 0; i < size;) {
        const std::int32_t start = i;
        UChar32 character = 0;
        U8_NEXT(reinterpret_cast<const std::uint8_t*>(suggested.data()), i, size, character);
        if (character < 0 || character == '/' || character == ':' || isInvisible(character)) {
            name += '-';
        } else {
            name += suggested.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(i - start));
        }
    }
    const bool isBlank = trimmed(name).find_first_not_of('.') == std::string_view::npos;
    return isBlank ? "Parvela download" : name;
}

/// What follows the last dot, dot included; empty when nothing stands before or behind it.
std::string_view extensionOf(std::string_view name) {
    const auto dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0 || dot + 1 == name.size()) return {};
    const std::string_view extension = name.substr(dot);
    return extension.size() <= maximumExtensionBytes ? extension : std::string_view();
}

/// As many whole user-perceived characters as fit; of one that is larger than that, its first code points.
std::string_view cut(std::string_view text, std::size_t bytes) {
    if (text.size() <= bytes) return text;
    std::size_t low = 0, high = bytes;  // every character takes a byte at least
    while (low < high) {
        const std::size_t middle = (low + high + 1) / 2;
        if (firstCharacters(text, middle).size() <= bytes) {
            low = middle;
        } else {
            high = middle - 1;
        }
    }
    if (low > 0) return firstCharacters(text, low);
    auto end = static_cast<std::int32_t>(bytes);
    U8_SET_CP_START(reinterpret_cast<const std::uint8_t*>(text.data()), 0, end);
    return text.substr(0, static_cast<std::size_t>(end));
}

}  // namespace

std::string downloadName(std::string_view suggested, const std::function<bool(const std::string&)>& isTaken) {
    const std::string name = cleaned(suggested);
    const std::string_view extension = extensionOf(name);
    const std::string_view base = std::string_view(name).substr(0, name.size() - extension.size());

    for (int number = 1;; ++number) {
        const std::string suffix = fmt::format("{}{}", number == 1 ? "" : fmt::format(" {}", number), extension);
        std::string candidate = fmt::format("{}{}", cut(base, maximumBytes - suffix.size()), suffix);
        if (!isTaken(candidate)) return candidate;
    }
}

}  // namespace parvela
