#pragma once

#include <ParvelaKit/CivilDate.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace parvela {

/// A person who can be assigned, as the quick-add parser sees them.
struct QuickAddMember {
    std::string id;
    std::string name;
    std::optional<std::string> email;

    bool operator==(const QuickAddMember&) const = default;
};

/// A label of the board.
struct QuickAddLabel {
    std::string id;
    std::string name;

    bool operator==(const QuickAddLabel&) const = default;
};

/// What the parser needs besides the line.
///
/// An absent list means that the list is not known, and every well-formed name is accepted; an empty list means that
/// there is nobody (or no label) to find, so every name stays in the title.
struct QuickAddContext {
    CivilDate today;
    std::optional<std::vector<QuickAddMember>> members;  ///< in the board's order
    std::optional<std::vector<QuickAddLabel>> labels;    ///< in the board's order

    bool operator==(const QuickAddContext&) const = default;
};

enum class QuickAddPriority { none = 0, low = 1, medium = 2, high = 3, urgent = 4 };

/// A recurrence rule as quick add understands it.
struct QuickAddRepeat {
    enum class Freq { daily, weekdays, weekly, monthly };

    Freq freq = Freq::daily;
    std::optional<std::vector<int>> weekdays;  ///< of a weekly rule; Sunday is 0, Saturday 6
    std::optional<int> monthDay;               ///< of a monthly rule; 1 … 31

    bool operator==(const QuickAddRepeat&) const = default;

    /// "daily", "weekdays", "weekly:1,4", "monthly:22"; a monthly rule without a day is "monthly:1".
    std::string ruleString() const;
    /// "Every day", "Every Mon, Wed & Fri", "Every month on the 22nd". A weekly rule without weekdays gives "Every ",
    /// its trailing blank included. Throws std::out_of_range for a weekday outside 0 … 6.
    std::string displayText() const;
};

/// A recognised piece of the line.
struct QuickAddToken {
    enum class Kind { assignee = 0, label = 1, priority = 2, date = 3, time = 4, repeat = 5 };

    std::size_t start = 0;  ///< in UTF-16 code units of the line
    std::size_t end = 0;    ///< one past the last code unit
    Kind kind = Kind::assignee;
    std::string value;    ///< for machines: an id, "urgent", "2025-06-13", "09:30", "weekly:1,4"
    std::string display;  ///< for people: a name, "Urgent", "Fri, Jun 13", "9:30 AM", "Every Mon & Thu"

    bool operator==(const QuickAddToken&) const = default;
};

/// What a line of quick add means.
struct QuickAddResult {
    std::string title;  ///< the line without its tokens, tidied; may be empty
    std::vector<std::string> assigneeIds;
    std::vector<std::string> labelIds;
    QuickAddPriority priority = QuickAddPriority::none;
    std::optional<std::string> dueDate;  ///< "YYYY-MM-DD"
    std::optional<std::string> dueTime;  ///< "HH:MM", 24 hours
    std::optional<QuickAddRepeat> repeat;
    std::vector<QuickAddToken> tokens;  ///< by `start`, disjoint

    bool operator==(const QuickAddResult&) const = default;
};

namespace QuickAdd {

/// "none", "low", "medium", "high" or "urgent", as the API spells a priority.
std::string_view apiString(QuickAddPriority priority);
std::optional<QuickAddPriority> priorityFromApiString(std::string_view text);
/// "None", "Low", "Medium", "High" or "Urgent".
std::string_view displayText(QuickAddPriority priority);

/// The name of the case: "assignee", "label", "priority", "date", "time" or "repeat".
std::string_view kindName(QuickAddToken::Kind kind);

/// "1st", "2nd", "3rd", "4th", "11th", … for a positive number.
std::string ordinal(int number);

/// "Today", "Tomorrow", else "Fri, Jun 13", followed by ", 2026" when that is not the year of `today`.
std::string dateDisplayText(CivilDate date, CivilDate today);

/// "9 AM", "5:30 PM", "12:05 AM" for "09:00", "17:30", "00:05"; an hour alone is accepted too. A text that is no time
/// comes back unchanged.
std::string timeDisplayText(std::string_view time);

}  // namespace QuickAdd

}  // namespace parvela
