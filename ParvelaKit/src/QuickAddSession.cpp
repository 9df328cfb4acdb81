#include "QuickAdd/Characters.h"
#include "QuickAdd/LiteralRanges.h"
#include "QuickAdd/NameKeys.h"

#include <ParvelaKit/QuickAddSession.h>
#include <ParvelaKit/Text.h>

#include <algorithm>
#include <string>

namespace parvela {

namespace {

constexpr std::string_view noBoardText = "Pick a default board in Settings first.";
constexpr std::string_view noTitleText = "Give the task a title.";
constexpr std::string_view repeatWarning = "Repeat rules can't be set from quick add — the first date is used.";

bool overlap(const QuickAddRange& a, const QuickAddRange& b) {
    return a.start < b.end && b.start < a.end;
}

/// The piece at `place`, else the last one that ends before it.
template <class Pieces>
std::optional<std::size_t> pieceAt(const Pieces& pieces, std::size_t place) {
    std::optional<std::size_t> found;
    for (std::size_t i = 0; i < pieces.size() && pieces[i].start <= place; ++i) found = i;
    return found;
}

}  // namespace

void QuickAddSession::edit(std::string_view text, std::size_t caret) {
    if (text == text_) return moveCaret(caret);  // a field that was told the text reports it back
    setText(toUtf16(text), caret);
    errorText_.reset();
    parse();
    updateCompletions();
}

void QuickAddSession::setText(std::u16string text, std::size_t caret) {
    caret_ = std::min(caret, text.size());
    QuickAdd::follow(literals_, QuickAdd::changeBetween(text16_, text, caret_));
    text16_ = std::move(text);
    text_ = toUtf8(text16_);
    QuickAdd::coverWords(literals_, text16_);
}

void QuickAddSession::parse() {
    result_ = QuickAdd::parse(text16_, context_, literals_);
}

void QuickAddSession::moveCaret(std::size_t caret) {
    caret_ = std::min(caret, text16_.size());
    if (mention_ && (caret_ <= mention_->range.start || caret_ > mention_->range.end)) closeCompletions();
}

QuickAddSession::Handled QuickAddSession::press(Key key) {
    if (completions_.empty()) return Handled::no;
    const std::size_t last = completions_.size() - 1;
    switch (key) {
        case Key::down:
            // Through the names, and behind the last one back to what was typed.
            if (!selected_) {
                select(0);
            } else {
                select(*selected_ == last ? std::nullopt : std::optional(*selected_ + 1));
            }
            return Handled::yes;
        case Key::up:
            if (!selected_) {
                select(last);
            } else {
                select(*selected_ == 0 ? std::nullopt : std::optional(*selected_ - 1));
            }
            return Handled::yes;
        case Key::escape:
            if (selected_) select(std::nullopt);
            closeCompletions();
            return Handled::yes;
    }
    return Handled::no;
}

void QuickAddSession::choose(std::size_t completion) {
    if (completion >= completions_.size()) return;
    select(completion);
    const std::size_t end = mention_->range.end;
    closeCompletions();
    if (end != text16_.size()) return;
    setText(text16_ + u' ', end + 1);
    parse();
}

void QuickAddSession::select(std::optional<std::size_t> completion) {
    selected_ = completion;
    replaceMention(completion ? toUtf16(completions_[*completion].text) : mention_->typed);
    errorText_.reset();
    parse();
}

void QuickAddSession::replaceMention(std::u16string_view by) {
    auto& range = mention_->range;
    std::u16string text = text16_.substr(0, range.start);
    text += by;
    text += std::u16string_view(text16_).substr(range.end);
    range.end = range.start + by.size();
    setText(std::move(text), range.end);
}

void QuickAddSession::giveBack(std::size_t token) {
    if (token >= tokens().size()) return;
    const QuickAddRange range{tokens()[token].start, tokens()[token].end};
    literals_.insert(std::ranges::lower_bound(literals_, range.start, {}, &QuickAddRange::start), range);
    closeCompletions();
    parse();
}

void QuickAddSession::takeAgain(std::size_t literal) {
    if (literal >= literals_.size()) return;
    literals_.erase(literals_.begin() + static_cast<std::ptrdiff_t>(literal));
    parse();
}

QuickAddSession::Handled QuickAddSession::toggleAtCaret() {
    const auto token = pieceAt(tokens(), caret_);
    const auto literal = pieceAt(literals_, caret_);
    if (!token && !literal) return Handled::no;
    if (token && (!literal || tokens()[*token].start > literals_[*literal].start)) {
        giveBack(*token);
    } else {
        takeAgain(*literal);
    }
    return Handled::yes;
}

void QuickAddSession::setToday(CivilDate today) {
    context_.today = today;
    parse();
}

void QuickAddSession::setLists(std::optional<std::vector<QuickAddMember>> members,
                               std::optional<std::vector<QuickAddLabel>> labels) {
    if (selected_) select(std::nullopt);
    context_.members = std::move(members);
    context_.labels = std::move(labels);
    parse();
    updateCompletions();
}

std::optional<QuickAddSubmission> QuickAddSession::commit(const std::optional<std::string>& board) {
    if (isCreating()) return std::nullopt;
    closeCompletions();
    if (!board) {
        errorText_ = noBoardText;
    } else if (result_.title.empty()) {
        errorText_ = noTitleText;
    } else {
        errorText_.reset();
        submittedText_ = text_;
        return QuickAddSubmission{.line = text_,
                                  .board = *board,
                                  .today = context_.today,
                                  .dueDate = {},
                                  .priority = {},
                                  .description = {},
                                  .members = context_.members,
                                  .labels = context_.labels,
                                  .literalRanges = literals_};
    }
    return std::nullopt;
}

void QuickAddSession::succeeded() {
    const bool isUnchanged = submittedText_ == text_;
    submittedText_.reset();
    errorText_.reset();
    if (isUnchanged) restore({});
}

void QuickAddSession::failed(std::string errorText) {
    submittedText_.reset();
    errorText_ = std::move(errorText);
}

void QuickAddSession::close() {
    closeCompletions();
    errorText_.reset();
}

std::optional<std::string_view> QuickAddSession::warning() const {
    return result_.repeat ? std::optional(repeatWarning) : std::nullopt;
}

void QuickAddSession::restore(Draft draft) {
    closeCompletions();
    text16_ = toUtf16(draft.text);
    text_ = toUtf8(text16_);
    caret_ = text16_.size();
    literals_ = std::move(draft.literals);
    std::erase_if(literals_, [this](const QuickAddRange& range) {
        return range.start >= range.end || range.end > text16_.size();
    });
    std::ranges::sort(literals_, {}, &QuickAddRange::start);
    parse();
}

void QuickAddSession::closeCompletions() {
    mention_.reset();
    completions_.clear();
    selected_.reset();
}

void QuickAddSession::updateCompletions() {
    closeCompletions();
    auto mention = mentionAtCaret();
    if (!mention) return;
    completions_ = completionsFor(*mention);
    // A name that is typed to its end needs no offer.
    const auto typed = QuickAdd::folded(mention->typed);
    if (completions_.size() == 1 && QuickAdd::folded(toUtf16(completions_[0].text)) == typed) completions_.clear();
    if (!completions_.empty()) mention_ = std::move(mention);
}

std::optional<QuickAddSession::Mention> QuickAddSession::mentionAtCaret() const {
    using Kind = QuickAddCompletion::Kind;
    const std::u16string_view before = std::u16string_view(text16_).substr(0, caret_);
    Mention mention;
    std::size_t queryStart = 0;

    const std::size_t openQuote = std::max(before.rfind(u"#\"") + 1, before.rfind(u"#\u201c") + 1);
    const bool isQuoted =
        openQuote > 0 && before.find_first_of(u"\"\u201d", openQuote + 1) == std::u16string_view::npos;
    if (isQuoted) {
        mention.kind = Kind::label;
        const bool isClosed = caret_ < text16_.size() && (text16_[caret_] == u'"' || text16_[caret_] == u'\u201d');
        mention.range = {openQuote - 1, isClosed ? caret_ + 1 : caret_};
        queryStart = openQuote + 1;
    } else {
        std::size_t start = caret_;
        while (start > 0 && !QuickAdd::isWhiteSpace(before[start - 1])) --start;
        while (start < caret_ && (before[start] == u'(' || before[start] == u'[')) ++start;
        std::size_t end = caret_;
        while (end < text16_.size() && !QuickAdd::isWhiteSpace(text16_[end])) ++end;
        if (start == caret_ || (before[start] != u'@' && before[start] != u'#')) return std::nullopt;
        mention.kind = before[start] == u'@' ? Kind::member : Kind::label;
        mention.range = {start, end};
        queryStart = start + 1;
    }
    const auto isTouched = [&](const QuickAddRange& literal) { return overlap(literal, mention.range); };
    if (std::ranges::any_of(literals_, isTouched)) return std::nullopt;
    mention.query = before.substr(queryStart);
    mention.typed = text16_.substr(mention.range.start, mention.range.end - mention.range.start);
    return mention;
}

std::vector<QuickAddCompletion> QuickAddSession::completionsFor(const Mention& mention) const {
    constexpr std::size_t longestList = 6;
    std::vector<QuickAddCompletion> completions;
    const auto add = [&](QuickAddCompletion completion, const std::vector<std::string>& spellings) {
        const auto text = spelling(spellings, completion.id);
        if (!text) return;
        completion.text = *text;
        completions.push_back(std::move(completion));
    };
    if (mention.kind == QuickAddCompletion::Kind::member && context_.members) {
        const auto query = QuickAdd::folded(mention.query);
        for (const auto& member : *context_.members) {
            if (completions.size() == longestList) break;
            if (!QuickAdd::isBeginning(query, member)) continue;
            add({mention.kind, member.id, member.name, member.email.value_or(""), {}},
                QuickAdd::memberSpellings(member));
        }
    } else if (mention.kind == QuickAddCompletion::Kind::label && context_.labels) {
        const auto query = QuickAdd::looseLabelKey(QuickAdd::labelKey(mention.query));
        for (const auto& label : *context_.labels) {
            if (completions.size() == longestList) break;
            if (!QuickAdd::isBeginning(query, label)) continue;
            add({mention.kind, label.id, label.name, {}, {}}, QuickAdd::labelSpellings(label));
        }
    }
    return completions;
}

std::optional<std::string> QuickAddSession::spelling(const std::vector<std::string>& spellings,
                                                     std::string_view id) const {
    for (const auto& candidate : spellings) {
        const auto parsed = QuickAdd::parse(candidate, context_);
        if (parsed.tokens.size() == 1 && parsed.tokens[0].value == id && parsed.title.empty()) return candidate;
    }
    return std::nullopt;
}

}  // namespace parvela
