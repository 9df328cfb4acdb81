#include "QuickAdd/TerminalText.h"

#include <ParvelaKit/QuickAddReport.h>

#include <algorithm>
#include <set>
#include <vector>

#include <fmt/format.h>

namespace parvela::QuickAdd {

namespace {

constexpr std::size_t mostLabels = 12;  // beyond, lines of labels would hide more than they show

std::string shown(std::string_view text) {
    return forTerminal(text).text;
}

struct Mark {
    std::size_t start = 0;  ///< column
    std::size_t end = 0;
    std::string label;
};

void appendLine(std::string& text, std::string_view line) {
    text += line.substr(0, line.find_last_not_of(' ') + 1);
    text += '\n';
}

/// The carets under the line, the last piece's label behind them, and the labels of the others below, last one first.
void appendMarks(std::string& text, const std::vector<Mark>& marks) {
    std::string carets;
    for (const auto& mark : marks) {
        carets.resize(mark.start, ' ');
        carets.resize(std::max(mark.end, mark.start + 1), '^');
    }
    const bool isLabelled = marks.size() <= mostLabels;
    if (isLabelled) carets += " " + marks.back().label;
    appendLine(text, carets);
    if (!isLabelled) return;
    const auto bars = [&marks](std::size_t count) {
        std::string line;
        for (std::size_t i = 0; i < count; ++i) {
            line.resize(marks[i].start, ' ');
            line += '|';
        }
        return line;
    };
    if (marks.size() > 1) appendLine(text, bars(marks.size() - 1));
    for (std::size_t i = marks.size() - 1; i-- > 0;) {
        std::string line = bars(i);
        line.resize(marks[i].start, ' ');
        appendLine(text, line + marks[i].label);
    }
}

void appendField(std::string& text, std::string_view name, std::string_view value) {
    appendLine(text, fmt::format("{:<10}{}", name, value));
}

}  // namespace

std::string report(std::string_view line, const QuickAddResult& result, CivilDate today) {
    const auto terminal = forTerminal(line);
    const auto columnAt = [&](std::size_t offset) {
        return terminal.columns[std::min(offset, terminal.columns.size() - 1)];
    };
    std::string text;
    appendLine(text, terminal.text);
    std::vector<Mark> marks;
    marks.reserve(result.tokens.size());
    for (const auto& token : result.tokens) {
        marks.push_back({columnAt(token.start), columnAt(token.end),
                         fmt::format("{}: {}", kindName(token.kind), shown(token.display))});
    }
    if (!marks.empty()) appendMarks(text, marks);
    text += '\n';

    appendField(text, "title", result.title.empty() ? "(none)" : shown(result.title));
    if (result.dueDate) {
        const auto date = CivilDate::parse(*result.dueDate);
        appendField(text, "date",
                    date ? fmt::format("{} ({})", dateDisplayText(*date, today), *result.dueDate) : *result.dueDate);
    }
    if (result.dueTime)
        appendField(text, "time", fmt::format("{} ({})", timeDisplayText(*result.dueTime), *result.dueTime));
    if (result.priority != QuickAddPriority::none) appendField(text, "priority", displayText(result.priority));
    for (const auto kind : {QuickAddToken::Kind::assignee, QuickAddToken::Kind::label}) {
        std::set<std::string_view> seen;
        for (const auto& token : result.tokens) {
            const bool isNew = token.kind == kind && seen.insert(token.value).second;
            if (isNew) appendField(text, kindName(kind), shown(token.display));
        }
    }
    if (result.repeat) appendField(text, "repeat", result.repeat->displayText());
    return text;
}

}  // namespace parvela::QuickAdd
