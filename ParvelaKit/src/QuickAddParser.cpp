#include "QuickAdd/Dates.h"
#include "QuickAdd/IdList.h"
#include "QuickAdd/Line.h"
#include "QuickAdd/Names.h"
#include "QuickAdd/Patterns.h"
#include "QuickAdd/QuotedLabels.h"
#include "QuickAdd/Repeats.h"
#include "QuickAdd/Times.h"
#include "QuickAdd/Title.h"

#include <ParvelaKit/QuickAddParser.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <optional>
#include <stdexcept>
#include <vector>

namespace parvela::QuickAdd {

namespace {

using Kind = QuickAddToken::Kind;

constexpr std::size_t longestLine = std::numeric_limits<std::int32_t>::max();

struct NameMatch {
    std::string id;
    std::string display;
};

/// One parse of one line.
class Parser {
public:
    Parser(std::u16string_view text, const QuickAddContext& context, std::span<const QuickAddRange> literalRanges)
        : line_(text), context_(context), literalRanges_(literalRanges) {
        if (context.members) memberSearch_.emplace(*context.members);
        if (context.labels) labelSearch_.emplace(*context.labels);
    }

    QuickAddResult run() {
        keepLiteralRanges();
        if (line_.hasHash()) takeQuotedLabels();
        takeWords();
        if (result_.repeat) completeRepeat();
        result_.title = titleWithout(result_.tokens, line_);
        return std::move(result_);
    }

private:
    void keepLiteralRanges();
    void takeQuotedLabels();
    void takeWords();
    void completeRepeat();

    // Each looks at the word and returns how many words it took; 0 when there is nothing of its kind.
    std::size_t takeAt(std::size_t index);
    std::size_t takeRepeat(std::size_t index);
    std::size_t takeDate(std::size_t index);
    std::size_t takeTime(std::size_t index);
    std::size_t takePriority(std::size_t index);
    std::size_t takeAssignee(std::size_t index);
    std::size_t takeLabel(std::size_t index);

    std::optional<NameMatch> resolveMember(std::u16string_view handle);
    std::optional<NameMatch> resolveLabel(std::u16string_view name);

    /// Consumes the words, which are available, and adds their token.
    void accept(std::size_t index, std::size_t length, Kind kind, std::string value, std::string display);
    void addToken(QuickAddToken token);
    bool areAvailable(std::size_t index, std::size_t length) const;
    /// How many words before a date or time may lead to it: "due", one of `first` and `second`, or "due" and one of
    /// them.
    std::size_t leadLength(std::size_t index, TermKind first, TermKind second) const;

    Line line_;
    const QuickAddContext& context_;
    std::span<const QuickAddRange> literalRanges_;
    std::optional<MemberSearch> memberSearch_;
    std::optional<LabelSearch> labelSearch_;

    QuickAddResult result_;
    IdList assigneeIds_{result_.assigneeIds};
    IdList labelIds_{result_.labelIds};
    CivilDate dueDay_;  // as in the result, when a date was found
    bool isTimeImplied_ = false;
    RepeatMatch::Anchor repeatAnchor_ = RepeatMatch::Anchor::given;
};

void Parser::keepLiteralRanges() {
    if (literalRanges_.empty()) return;
    std::vector<QuickAddRange> ranges(literalRanges_.begin(), literalRanges_.end());
    std::ranges::sort(ranges, {}, &QuickAddRange::start);
    auto range = ranges.begin();
    std::size_t coveredUpTo = 0;  // by the ranges that begin before the word's end
    for (std::size_t i = 0; i < line_.size(); ++i) {
        for (; range != ranges.end() && range->start < line_[i].end; ++range) {
            if (range->start < range->end) coveredUpTo = std::max(coveredUpTo, range->end);
        }
        if (line_[i].start < coveredUpTo) line_.makeLiteral(i);
    }
}

void Parser::takeQuotedLabels() {
    QuotedLabels labels(line_.text());
    std::size_t first = 0;
    while (const auto label = labels.next()) {
        while (first < line_.size() && line_[first].end <= label->start) ++first;
        std::size_t last = first;
        bool isConsumed = false;
        bool isLiteral = false;
        for (; last < line_.size() && line_[last].start < label->end; ++last) {
            isConsumed |= line_[last].consumed;
            isLiteral |= line_[last].literal;
        }
        auto match = isLiteral ? std::nullopt : resolveLabel(label->name);
        if (match && isConsumed) continue;
        for (std::size_t i = first; i < last; ++i) match ? line_.consume(i) : line_.makeQuoted(i);
        if (!match) continue;
        labelIds_.add(match->id);
        addToken({label->start, label->end, Kind::label, std::move(match->id), std::move(match->display)});
    }
}

void Parser::takeWords() {
    const auto quotedCount = static_cast<std::ptrdiff_t>(result_.tokens.size());
    for (std::size_t i = 0; i < line_.size();) {
        i += std::max<std::size_t>(takeAt(i), 1);
    }
    if (quotedCount == 0 || result_.tokens.size() == static_cast<std::size_t>(quotedCount)) return;
    std::vector<QuickAddToken> sorted;
    sorted.reserve(result_.tokens.size());
    const auto begin = std::make_move_iterator(result_.tokens.begin());
    const auto end = std::make_move_iterator(result_.tokens.end());
    std::merge(begin, begin + quotedCount, begin + quotedCount, end, std::back_inserter(sorted),
               [](const QuickAddToken& a, const QuickAddToken& b) { return a.start < b.start; });
    result_.tokens = std::move(sorted);
}

std::size_t Parser::takeAt(std::size_t index) {
    if (!line_.isAvailable(index) || line_.lower(index).empty()) return 0;
    const char16_t first = line_.lower(index).front();
    if (first == u'@') return takeAssignee(index);
    if (first == u'#') return takeLabel(index);
    // Of the other words only those of the vocabulary and numbers can begin anything.
    if (line_.term(index).kind == TermKind::none && !isAsciiDigit(first)) return 0;
    if (const auto taken = takeRepeat(index)) return taken;
    if (const auto taken = takeDate(index)) return taken;
    if (const auto taken = takeTime(index)) return taken;
    return takePriority(index);
}

std::size_t Parser::takeRepeat(std::size_t index) {
    if (result_.repeat) return 0;
    auto match = recogniseRepeat(line_, index);
    if (!match || !areAvailable(index, match->length)) return 0;
    accept(index, match->length, Kind::repeat, {}, {});
    result_.repeat = std::move(match->rule);
    repeatAnchor_ = match->anchor;
    return match->length;
}

std::size_t Parser::takeDate(std::size_t index) {
    if (result_.dueDate) return 0;
    for (std::size_t lead = leadLength(index, TermKind::on, TermKind::by) + 1; lead-- > 0;) {
        const auto match = recogniseDate(line_, index + lead, context_.today);
        if (!match || !areAvailable(index, lead + match->length)) continue;
        dueDay_ = match->date;
        result_.dueDate = dueDay_.text();
        if (match->impliedTime == DateMatch::ImpliedTime::evening && !result_.dueTime) {
            result_.dueTime = "18:00";
            isTimeImplied_ = true;
        }
        accept(index, lead + match->length, Kind::date, *result_.dueDate, dateDisplayText(match->date, context_.today));
        return lead + match->length;
    }
    return 0;
}

std::size_t Parser::takeTime(std::size_t index) {
    if (result_.dueTime && !isTimeImplied_) return 0;
    for (std::size_t lead = leadLength(index, TermKind::at, TermKind::by) + 1; lead-- > 0;) {
        const auto match = recogniseTime(line_, index + lead);
        if (!match || !areAvailable(index, lead + match->length)) continue;
        result_.dueTime = match->text();
        isTimeImplied_ = false;
        accept(index, lead + match->length, Kind::time, *result_.dueTime, timeDisplayText(*result_.dueTime));
        return lead + match->length;
    }
    return 0;
}

std::size_t Parser::takePriority(std::size_t index) {
    const Term term = line_.term(index);
    if (term.kind != TermKind::priority || result_.priority != QuickAddPriority::none) return 0;
    result_.priority = static_cast<QuickAddPriority>(term.value);
    accept(index, 1, Kind::priority, std::string(apiString(result_.priority)),
           std::string(displayText(result_.priority)));
    return 1;
}

std::size_t Parser::takeAssignee(std::size_t index) {
    const auto word = line_.lower(index);
    if (word.size() < 2) return 0;
    auto match = resolveMember(word.substr(1));
    if (!match) return 0;
    assigneeIds_.add(match->id);
    accept(index, 1, Kind::assignee, std::move(match->id), std::move(match->display));
    return 1;
}

std::size_t Parser::takeLabel(std::size_t index) {
    auto match = resolveLabel(line_.lower(index).substr(1));
    if (!match) return 0;
    labelIds_.add(match->id);
    accept(index, 1, Kind::label, std::move(match->id), std::move(match->display));
    return 1;
}

std::optional<NameMatch> Parser::resolveMember(std::u16string_view handle) {
    if (memberSearch_) {
        const auto* member = memberSearch_->find(handle);
        return member ? std::optional<NameMatch>({member->id, member->name}) : std::nullopt;
    }
    if (!isHandle(handle)) return std::nullopt;
    NameMatch match{utf8(handle), "@"};
    match.display += match.id;
    return match;
}

std::optional<NameMatch> Parser::resolveLabel(std::u16string_view name) {
    name = trimmed(name);
    if (name.empty()) return std::nullopt;
    if (labelSearch_) {
        const auto* label = labelSearch_->find(name);
        return label ? std::optional<NameMatch>({label->id, label->name}) : std::nullopt;
    }
    if (isAllDigits(name)) return std::nullopt;
    return NameMatch{utf8(name), utf8(name)};
}

void Parser::completeRepeat() {
    auto& rule = *result_.repeat;
    if (!result_.dueDate) {
        const CivilDate date = firstDate(rule, context_.today);
        if (hasDateText(date)) result_.dueDate = date.text();
    } else if (repeatAnchor_ == RepeatMatch::Anchor::implicit) {
        rule = anchoredAt(std::move(rule), dueDay_);
    }
    const auto token = std::ranges::find(result_.tokens, Kind::repeat, &QuickAddToken::kind);
    token->value = rule.ruleString();
    token->display = rule.displayText();
}

bool Parser::areAvailable(std::size_t index, std::size_t length) const {
    for (std::size_t i = index; i < index + length; ++i) {
        if (!line_.isAvailable(i)) return false;
    }
    return true;
}

void Parser::accept(std::size_t index, std::size_t length, Kind kind, std::string value, std::string display) {
    for (std::size_t i = index; i < index + length; ++i) line_.consume(i);
    addToken({line_[index].start, line_[index + length - 1].end, kind, std::move(value), std::move(display)});
}

void Parser::addToken(QuickAddToken token) {
    constexpr std::size_t usualCount = 4;
    auto& tokens = result_.tokens;
    // A line has at most as many tokens as words. Room for all of them at once spares thousands of tokens their moves.
    if (tokens.size() == tokens.capacity())
        tokens.reserve(tokens.empty() ? usualCount : std::max(line_.size(), usualCount));
    tokens.push_back(std::move(token));
}

std::size_t Parser::leadLength(std::size_t index, TermKind first, TermKind second) const {
    const auto isLead = [&](std::size_t word) {
        const TermKind kind = line_.term(word).kind;
        return kind == first || kind == second;
    };
    if (line_.term(index).kind == TermKind::due) return isLead(index + 1) ? 2 : 1;
    return isLead(index) ? 1 : 0;
}

}  // namespace

QuickAddResult parse(std::u16string_view line, const QuickAddContext& context,
                     std::span<const QuickAddRange> literalRanges) {
    if (line.size() >= longestLine) throw std::length_error("line too long");
    return Parser(line, context, literalRanges).run();
}

QuickAddResult parse(std::string_view line, const QuickAddContext& context,
                     std::span<const QuickAddRange> literalRanges) {
    Utf16Buffer decoded;
    decodeUtf8(line, decoded);
    return parse(std::u16string_view(decoded.data(), decoded.size()), context, literalRanges);
}

}  // namespace parvela::QuickAdd
