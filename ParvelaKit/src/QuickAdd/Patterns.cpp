#include "QuickAdd/Patterns.h"

#include "QuickAdd/Characters.h"

#include <cstddef>

#include <unicode/uchar.h>
#include <unicode/utf16.h>

namespace parvela::QuickAdd {

namespace {

/// Reads a word from front to back.
class Scanner {
public:
    explicit Scanner(std::u16string_view word) : rest_(word) {}

    bool isAtEnd() const { return rest_.empty(); }

    bool take(char16_t unit) {
        if (rest_.empty() || rest_.front() != unit) return false;
        rest_.remove_prefix(1);
        return true;
    }

    bool take(std::u16string_view text) {
        if (!rest_.starts_with(text)) return false;
        rest_.remove_prefix(text.size());
        return true;
    }

    struct Number {
        int digits = 0;
        int value = 0;
    };

    /// Up to `limit` digits, as many as there are.
    Number takeDigits(int limit) {
        Number number;
        while (number.digits < limit && !rest_.empty()) {
            const char16_t unit = rest_.front();
            if (isAsciiDigit(unit)) {
                if (number.value != noNumber) number.value = number.value * 10 + (unit - u'0');
                rest_.remove_prefix(1);
            } else if (unit < 0x80 || !takeOtherDigit()) {
                break;
            } else {
                number.value = noNumber;
            }
            ++number.digits;
        }
        return number;
    }

    /// The code point in front, which is taken. Not at the end.
    char32_t takeCharacter() {
        const std::size_t length =
            rest_.size() > 1 && U16_IS_LEAD(rest_[0]) && U16_IS_TRAIL(rest_[1]) ? std::size_t{2} : std::size_t{1};
        const auto character =
            length == 2 ? static_cast<char32_t>(U16_GET_SUPPLEMENTARY(rest_[0], rest_[1])) : char32_t{rest_[0]};
        rest_.remove_prefix(length);
        return character;
    }

private:
    bool takeOtherDigit() {
        Scanner ahead(rest_);
        if (!u_isdigit(static_cast<UChar32>(ahead.takeCharacter()))) return false;
        rest_ = ahead.rest_;
        return true;
    }

    std::u16string_view rest_;
};

/// `digits` digits exactly.
bool take(Scanner& scanner, int digits, int& value) {
    const auto number = scanner.takeDigits(digits);
    value = number.value;
    return number.digits == digits;
}

/// One or two digits.
bool takeOneOrTwo(Scanner& scanner, int& value) {
    const auto number = scanner.takeDigits(2);
    value = number.value;
    return number.digits > 0;
}

bool takeClockTime(Scanner& scanner, ClockTime& time) {
    if (!takeOneOrTwo(scanner, time.hour)) return false;
    if (!scanner.take(u':')) return true;
    int minutes = 0;
    if (!take(scanner, 2, minutes)) return false;
    time.minutes = minutes;
    return true;
}

bool isLetterOrNumber(char32_t character) {
    constexpr auto mask = U_GC_L_MASK | U_GC_N_MASK;
    return (U_GET_GC_MASK(static_cast<UChar32>(character)) & mask) != 0;
}

}  // namespace

std::optional<int> matchDayOfMonth(std::u16string_view word) {
    Scanner scanner(word);
    int day = 0;
    if (!takeOneOrTwo(scanner, day)) return std::nullopt;
    if (!scanner.isAtEnd()) {
        scanner.take(u"st") || scanner.take(u"nd") || scanner.take(u"rd") || scanner.take(u"th");
    }
    return scanner.isAtEnd() ? std::optional(day) : std::nullopt;
}

std::optional<int> matchYear(std::u16string_view word) {
    Scanner scanner(word);
    int year = 0;
    if (!scanner.take(u"20") || !take(scanner, 2, year) || !scanner.isAtEnd()) return std::nullopt;
    return year == noNumber ? noNumber : 2000 + year;
}

std::optional<int> matchCount(std::u16string_view word) {
    Scanner scanner(word);
    const auto number = scanner.takeDigits(3);
    return number.digits > 0 && scanner.isAtEnd() ? std::optional(number.value) : std::nullopt;
}

std::optional<NumericDate> matchIsoDate(std::u16string_view word) {
    Scanner scanner(word);
    NumericDate date;
    const bool matches = take(scanner, 4, date.year) && scanner.take(u'-') && take(scanner, 2, date.month) &&
                         scanner.take(u'-') && take(scanner, 2, date.day) && scanner.isAtEnd();
    return matches ? std::optional(date) : std::nullopt;
}

std::optional<MonthAndDay> matchMonthAndDay(std::u16string_view word) {
    Scanner scanner(word);
    MonthAndDay date;
    if (!takeOneOrTwo(scanner, date.month) || !scanner.take(u'/') || !takeOneOrTwo(scanner, date.day))
        return std::nullopt;
    if (scanner.take(u'/')) {
        const auto year = scanner.takeDigits(4);
        if (year.digits != 2 && year.digits != 4) return std::nullopt;
        date.yearForm = year.digits == 2 ? MonthAndDay::Year::twoDigits : MonthAndDay::Year::fourDigits;
        date.year = year.value;
    }
    return scanner.isAtEnd() ? std::optional(date) : std::nullopt;
}

std::optional<ClockTime> matchClockTime(std::u16string_view word) {
    Scanner scanner(word);
    ClockTime time;
    return takeClockTime(scanner, time) && scanner.isAtEnd() ? std::optional(time) : std::nullopt;
}

std::optional<SuffixedTime> matchSuffixedTime(std::u16string_view word) {
    Scanner scanner(word);
    SuffixedTime match;
    if (!takeClockTime(scanner, match.time)) return std::nullopt;
    if (scanner.take(u'p')) {
        match.half = DayHalf::afterNoon;
    } else if (!scanner.take(u'a')) {
        return std::nullopt;
    }
    if (scanner.take(u'.')) {
        if (!scanner.take(u'm')) return std::nullopt;
        scanner.take(u'.');
    } else if (!scanner.take(u'm')) {
        return std::nullopt;
    }
    return scanner.isAtEnd() ? std::optional(match) : std::nullopt;
}

bool isHandle(std::u16string_view word) {
    Scanner scanner(word);
    if (scanner.isAtEnd() || !isLetterOrNumber(scanner.takeCharacter())) return false;
    while (!scanner.isAtEnd()) {
        const char32_t character = scanner.takeCharacter();
        if (character == U'.' || character == U'_' || character == U'\'' || character == U'-') continue;
        if (!isLetterOrNumber(character)) return false;
    }
    return true;
}

bool isAllDigits(std::u16string_view word) {
    Scanner scanner(word);
    while (scanner.takeDigits(1).digits > 0) {
    }
    return !word.empty() && scanner.isAtEnd();
}

}  // namespace parvela::QuickAdd
