#include <ParvelaKit/ShownTitle.h>
#include <ParvelaKit/Text.h>

namespace parvela {

namespace {

constexpr char16_t leftToRightIsolate = u'\u2066';
constexpr char16_t firstStrongIsolate = u'\u2068';
constexpr char16_t popDirectionalIsolate = u'\u2069';

bool isControl(char16_t unit) {
    return unit < 0x20 || (unit >= 0x7F && unit < 0xA0) || unit == u'\u2028' || unit == u'\u2029';
}

}  // namespace

std::string shortened(std::string_view title, std::size_t longest) {
    const std::string_view beginning = firstCharacters(title, longest);
    std::u16string text = toUtf16(beginning);
    for (char16_t& unit : text) {
        if (isControl(unit)) unit = u' ';
    }
    if (beginning.size() < title.size()) text += u'…';
    return toUtf8(text);
}

std::string shownTitle(std::string_view title, std::size_t longest) {
    std::u16string isolated(1, firstStrongIsolate);
    std::size_t open = 0;
    for (const char16_t unit : toUtf16(shortened(title, longest))) {
        if (unit >= leftToRightIsolate && unit <= firstStrongIsolate) ++open;
        if (unit == popDirectionalIsolate) {
            if (open == 0) continue;  // it would end our own isolate
            --open;
        }
        isolated += unit;
    }
    isolated.append(open + 1, popDirectionalIsolate);
    return toUtf8(isolated);
}

}  // namespace parvela
