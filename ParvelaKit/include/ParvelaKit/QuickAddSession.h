#pragma once

#include <ParvelaKit/CivilDate.h>
#include <ParvelaKit/QuickAddParser.h>
#include <ParvelaKit/QuickAddRecords.h>
#include <ParvelaKit/QuickAddService.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace parvela {

/// A person or label to offer while a name is typed.
struct QuickAddCompletion {
    enum class Kind { member, label };

    Kind kind = Kind::member;
    std::string id;
    std::string name;    ///< to show
    std::string detail;  ///< to show beside it: the e-mail address, or empty
    std::string text;    ///< what is written into the line: "@robin", "#design", "#\"Design Review\""

    bool operator==(const QuickAddCompletion&) const = default;
};

/// One use of a quick-add field, without the field: what is typed, what is recognised in it, what the user took back,
/// the names on offer, and what happens when the line is sent. The field shows this state and reports every edit and
/// key.
///
/// All offsets are UTF-16 code units of the text; `TextOffsets` translates them. The text is never lost: only a line
/// that was created is removed, and only when nothing was typed since.
class QuickAddSession {
public:
    enum class Key { up, down, escape };
    /// Whether a key meant something here. Else it keeps its usual meaning.
    enum class Handled { no, yes };

    explicit QuickAddSession(CivilDate today) : context_{.today = today, .members = {}, .labels = {}} { parse(); }

    // What the field reports.

    /// The text after an edit, and the caret behind it. Tells by itself which piece was changed.
    void edit(std::string_view text, std::size_t caret);
    void moveCaret(std::size_t caret);
    Handled press(Key key);
    /// By a click. The caret comes to stand behind the name.
    void choose(std::size_t completion);

    // Recognised pieces that were not meant.

    /// Takes the token as plain text from now on, also while the text around it or the piece itself is edited.
    void giveBack(std::size_t token);
    /// Lets a piece that was given back be recognised again.
    void takeAgain(std::size_t literal);
    /// One key for both: the piece at the caret, else the last one before it.
    Handled toggleAtCaret();

    // What the world reports.

    void setToday(CivilDate today);
    /// The people and labels of the chosen board; none while they are not known.
    void setLists(std::optional<std::vector<QuickAddMember>> members, std::optional<std::vector<QuickAddLabel>> labels);

    // Sending.

    /// What to send, exactly as it is shown; from then on `isCreating`, until `succeeded` or `failed`. None, with
    /// `errorText` set, when there is no board or no title; none and nothing else while a line is being created.
    std::optional<QuickAddSubmission> commit(const std::optional<std::string>& board);
    /// The line became a task. Removes it unless the text was changed in the meantime.
    void succeeded();
    /// It did not. The text stays.
    void failed(std::string errorText);
    /// The field goes away: forgets the error and the names on offer, keeps the text.
    void close();

    // What to show.

    const std::string& text() const { return text_; }
    std::size_t caret() const { return caret_; }
    const QuickAddResult& result() const { return result_; }
    const std::vector<QuickAddToken>& tokens() const { return result_.tokens; }
    /// Pieces that were given back, in the order of the text.
    const std::vector<QuickAddRange>& literals() const { return literals_; }

    /// Names that fit what is being typed, best first; empty when there is nothing to offer.
    const std::vector<QuickAddCompletion>& completions() const { return completions_; }
    /// The one that stands in the text now, moved there by the arrow keys.
    std::optional<std::size_t> selectedCompletion() const { return selected_; }

    bool isCreating() const { return submittedText_.has_value(); }
    const std::optional<std::string>& errorText() const { return errorText_; }
    /// What the user should know before sending.
    std::optional<std::string_view> warning() const;

    // What to keep when the program ends.

    struct Draft {
        std::string text;
        std::vector<QuickAddRange> literals;

        bool operator==(const Draft&) const = default;
    };
    Draft draft() const { return {text_, literals_}; }
    /// Replaces all that is typed. Ranges outside the text are ignored.
    void restore(Draft draft);

private:
    /// The name being typed, as a piece of the text.
    struct Mention {
        QuickAddCompletion::Kind kind = QuickAddCompletion::Kind::member;
        QuickAddRange range;
        std::u16string query;  ///< the name so far, without its mark
        std::u16string typed;  ///< the piece as the user typed it, while a completion stands in its place
    };

    void parse();
    void setText(std::u16string text, std::size_t caret);
    void replaceMention(std::u16string_view by);
    void updateCompletions();
    void closeCompletions();
    void select(std::optional<std::size_t> completion);
    std::optional<Mention> mentionAtCaret() const;
    std::vector<QuickAddCompletion> completionsFor(const Mention& mention) const;
    /// The first of the spellings that the parser takes for this very name, and for nothing else.
    std::optional<std::string> spelling(const std::vector<std::string>& spellings, std::string_view id) const;

    QuickAddContext context_;
    std::u16string text16_;
    std::string text_;
    std::size_t caret_ = 0;
    std::vector<QuickAddRange> literals_;
    QuickAddResult result_;
    std::optional<Mention> mention_;
    std::vector<QuickAddCompletion> completions_;
    std::optional<std::size_t> selected_;
    std::optional<std::string> submittedText_;
    std::optional<std::string> errorText_;
};

}  // namespace parvela
