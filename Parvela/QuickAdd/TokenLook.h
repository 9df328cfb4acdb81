#pragma once

#include <ParvelaKit/QuickAddRecords.h>

#include <string_view>

namespace parvela {

/// How a kind of token looks wherever it is shown.
struct TokenLook {
    std::string_view name;  ///< for people, and for screen readers
    const char* icon;
    const char* color;      ///< of the text on a light ground
    const char* darkColor;  ///< and on a dark one
    const char* ground;     ///< behind the text, to be made mostly transparent
};

/// The colours match the chips' in the style sheet.
constexpr TokenLook lookOf(QuickAddToken::Kind kind) {
    switch (kind) {
        case QuickAddToken::Kind::assignee:
            return {"Assignee", "parvela-person-symbolic", "#1a5fb4", "#99c1f1", "#3584e4"};
        case QuickAddToken::Kind::label:
            return {"Label", "parvela-tag-symbolic", "#813d9c", "#dc8add", "#9141ac"};
        case QuickAddToken::Kind::priority:
            return {"Priority", "parvela-flag-symbolic", "#a51d2d", "#ff938c", "#e01b24"};
        case QuickAddToken::Kind::date:
            return {"Date", "parvela-calendar-symbolic", "#1b6e3c", "#8ff0a4", "#2ec27e"};
        case QuickAddToken::Kind::time:
            return {"Time", "parvela-clock-symbolic", "#10606a", "#8be0ea", "#26a0b0"};
        case QuickAddToken::Kind::repeat:
            break;
    }
    return {"Repeat", "parvela-repeat-symbolic", "#8a4200", "#ffbe6f", "#ff7800"};
}

}  // namespace parvela
