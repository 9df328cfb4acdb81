#include "QuickAdd/LiteralRanges.h"
#include "support/QuickAddSamples.h"

#include <ParvelaKit/QuickAddSession.h>
#include <ParvelaKit/Text.h>
#include <ParvelaKit/TextOffsets.h>

namespace parvela {
namespace {

using Key = QuickAddSession::Key;
using Handled = QuickAddSession::Handled;

/// A text field as the desktop has one: it changes its own text and tells the session.
class Field {
public:
    explicit Field(QuickAddSession& session) : session_(session) {}

    Field& type(std::string_view letters) {
        for (const char16_t unit : toUtf16(letters)) replace(session_.caret(), session_.caret(), {&unit, 1});
        return *this;
    }
    Field& backspace(std::size_t count = 1) {
        for (std::size_t i = 0; i < count; ++i) replace(session_.caret() - 1, session_.caret(), {});
        return *this;
    }
    /// Puts the caret behind the first place of `text`.
    Field& goBehind(std::string_view text) {
        session_.moveCaret(toUtf16(session_.text()).find(toUtf16(text)) + toUtf16(text).size());
        return *this;
    }

private:
    void replace(std::size_t start, std::size_t end, std::u16string_view by) {
        std::u16string text = toUtf16(session_.text());
        text.replace(start, end - start, by);
        session_.edit(toUtf8(text), start + by.size());
    }

    QuickAddSession& session_;
};

struct QuickAddSessionTest : testing::Test {
    QuickAddSessionTest() {
        const auto board = samples::boardContext();
        session.setLists(board.members, board.labels);
    }

    /// The tokens as "kind:text", the literal pieces as "plain:text".
    std::string pieces() const {
        const std::u16string text = toUtf16(session.text());
        std::string found;
        const auto add = [&](std::string_view kind, std::size_t start, std::size_t end) {
            found += (found.empty() ? "" : ", ") + std::string(kind) + ":" + toUtf8(text.substr(start, end - start));
        };
        for (const auto& token : session.tokens()) add(QuickAdd::kindName(token.kind), token.start, token.end);
        for (const auto& literal : session.literals()) add("plain", literal.start, literal.end);
        return found;
    }

    std::vector<std::string> offers() const {
        std::vector<std::string> texts;
        for (const auto& completion : session.completions()) texts.push_back(completion.text);
        return texts;
    }

    QuickAddSession session{CivilDate{2025, 6, 10}};
    Field field{session};
};

using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(QuickAddSessionTest, recognisesWhileTheUserTypes) {
    field.type("Call tomorrow");
    EXPECT_EQ(pieces(), "date:tomorrow");
    field.type("s");
    EXPECT_EQ(pieces(), "");
    field.backspace().type(" at 9am @rob");
    EXPECT_EQ(pieces(), "date:tomorrow, time:at 9am, assignee:@rob");
    session.setToday({2025, 6, 11});
    EXPECT_EQ(session.result().dueDate, "2025-06-12");
    EXPECT_EQ(session.warning(), std::nullopt);
    field.type(" daily");
    EXPECT_EQ(session.warning(), "Repeat rules can't be set from quick add — the first date is used.");
}

TEST_F(QuickAddSessionTest, aPieceGivenBackStaysPlainWhileTheUserGoesOn) {
    field.type("Read Friday !high now");
    session.giveBack(0);
    EXPECT_EQ(pieces(), "priority:!high, plain:Friday");
    EXPECT_EQ(session.result().title, "Read Friday now");

    field.type(" or tomorrow");
    EXPECT_EQ(pieces(), "priority:!high, date:tomorrow, plain:Friday");
    field.goBehind("Read").type(" the book of");
    EXPECT_EQ(pieces(), "priority:!high, date:tomorrow, plain:Friday");
    field.goBehind("Fri").backspace(3).type("Mon");
    EXPECT_EQ(session.text(), "Read the book of Monday !high now or tomorrow");
    EXPECT_EQ(pieces(), "priority:!high, date:tomorrow, plain:Monday");
    field.goBehind("Monday").type("s").backspace();
    EXPECT_EQ(pieces(), "priority:!high, date:tomorrow, plain:Monday");
    field.goBehind("Monday").backspace(6).type("friday");
    EXPECT_EQ(pieces(), "date:friday, priority:!high");  // the piece was deleted, this is a new one
}

TEST_F(QuickAddSessionTest, oneKeyGivesThePieceAtTheCaretBackAndTakesItAgain) {
    EXPECT_EQ(session.toggleAtCaret(), Handled::no);
    field.type("on friday Sam p1 x");
    EXPECT_EQ(session.toggleAtCaret(), Handled::yes);
    EXPECT_EQ(pieces(), "date:on friday, plain:p1");
    EXPECT_EQ(session.toggleAtCaret(), Handled::yes);
    EXPECT_EQ(pieces(), "date:on friday, priority:p1");
    field.goBehind("on fr");
    EXPECT_EQ(session.toggleAtCaret(), Handled::yes);
    EXPECT_EQ(pieces(), "priority:p1, plain:on friday");
    session.takeAgain(0);
    EXPECT_EQ(pieces(), "date:on friday, priority:p1");
    session.giveBack(7);
    session.takeAgain(7);
    EXPECT_EQ(pieces(), "date:on friday, priority:p1");
}

TEST_F(QuickAddSessionTest, sendsExactlyWhatIsShown) {
    field.type("Read Friday @rosa #bug tomorrow");
    session.giveBack(0);
    const auto submission = session.commit("b1");
    ASSERT_TRUE(submission);
    EXPECT_TRUE(session.isCreating());
    EXPECT_EQ(session.commit("b1"), std::nullopt);  // once is enough
    const auto draft = QuickAddService::parse(*submission);
    ASSERT_TRUE(draft);
    EXPECT_EQ(draft->task.board, "b1");
    EXPECT_EQ(draft->task.title, session.result().title);
    EXPECT_EQ(draft->task.title, "Read Friday");
    EXPECT_EQ(draft->task.dueDate, "2025-06-11");
    EXPECT_EQ(draft->task.assignees, std::vector<std::string>{"u-rosa"});
    EXPECT_EQ(draft->task.labels, std::vector<std::string>{"l-bug"});
}

TEST_F(QuickAddSessionTest, keepsTheTextUntilItIsATask) {
    EXPECT_EQ(session.commit("b1"), std::nullopt);
    EXPECT_EQ(session.errorText(), "Give the task a title.");
    field.type("Call today");
    EXPECT_EQ(session.errorText(), std::nullopt);
    EXPECT_EQ(session.commit(std::nullopt), std::nullopt);
    EXPECT_EQ(session.errorText(), "Pick a default board in Settings first.");

    ASSERT_TRUE(session.commit("b1"));
    EXPECT_EQ(session.errorText(), std::nullopt);
    session.failed("You appear to be offline.");
    EXPECT_EQ(session.errorText(), "You appear to be offline.");
    EXPECT_EQ(session.text(), "Call today");
    EXPECT_FALSE(session.isCreating());

    session.close();
    EXPECT_EQ(session.errorText(), std::nullopt);
    EXPECT_EQ(session.text(), "Call today");

    ASSERT_TRUE(session.commit("b1"));
    field.type(" and write");  // typed while the request is on its way
    session.succeeded();
    EXPECT_EQ(session.text(), "Call today and write");
    EXPECT_FALSE(session.isCreating());
    ASSERT_TRUE(session.commit("b1"));
    session.succeeded();
    EXPECT_EQ(session.text(), "");
    EXPECT_THAT(session.tokens(), IsEmpty());
}

TEST_F(QuickAddSessionTest, aDraftComesBackWithItsPlainPieces) {
    field.type("Read Friday tomorrow");
    session.giveBack(0);
    QuickAddSession next(CivilDate{2025, 6, 11});
    next.restore(session.draft());
    EXPECT_EQ(next.draft(), session.draft());
    EXPECT_EQ(next.result().title, "Read Friday");
    EXPECT_EQ(next.caret(), 20U);
    next.restore({"today", {{4, 9}, {3, 2}, {7, 8}}});
    EXPECT_THAT(next.literals(), IsEmpty());
    EXPECT_EQ(next.tokens().size(), 1U);
}

TEST_F(QuickAddSessionTest, offersTheNamesThatFit) {
    const struct {
        const char* typed;
        std::vector<std::string> offers;
    } cases[] = {
        {"@", {"@Robin", "@Rosa", "@José", "@Mary", "@SamSmith", "@SamStone"}},
        {"ask @ro", {"@Robin", "@Rosa"}},
        {"(@RO", {"@Robin", "@Rosa"}},
        {"@sam", {"@SamSmith", "@SamStone"}},
        {"@st", {"@SamStone"}},  // a surname, and the e-mail name
        {"@jn", {"@José"}},
        {"#", {"#Design", "#\"Design Review\"", "#bug", "#Ärger", "#API_v2", "#api-v2"}},
        {"#rev", {"#\"Design Review\""}},
        {"#design_r", {"#\"Design Review\""}},
        {"#\"design r", {"#\"Design Review\""}},
        {"#\u201cdes", {"#Design", "#\"Design Review\""}},
        {"#A\u0308", {"#Ärger"}},
    };
    for (const auto& [typed, expected] : cases) {
        session.restore({});
        field.type(typed);
        EXPECT_EQ(offers(), expected) << typed;
        EXPECT_EQ(session.selectedCompletion(), std::nullopt);
    }
    // "@robin" is complete.
    for (const char* typed : {"call", "@robin", "@xy", "@robin ", "a@ro", "#design r", "#\"bug\" "}) {
        session.restore({});
        field.type(typed);
        EXPECT_THAT(offers(), IsEmpty()) << typed;
    }
    session.restore({});
    session.setLists(std::nullopt, std::nullopt);
    field.type("@ro");
    EXPECT_THAT(offers(), IsEmpty());
}

TEST_F(QuickAddSessionTest, theArrowKeysWriteTheNameAndReturnSendsWhatStandsThere) {
    field.type("x @ro");
    EXPECT_EQ(session.press(Key::down), Handled::yes);
    EXPECT_EQ(session.text(), "x @Robin");
    EXPECT_EQ(session.selectedCompletion(), 0U);
    EXPECT_EQ(pieces(), "assignee:@Robin");
    session.press(Key::down);
    EXPECT_EQ(session.text(), "x @Rosa");
    session.press(Key::down);
    EXPECT_EQ(session.text(), "x @ro");
    EXPECT_EQ(session.selectedCompletion(), std::nullopt);
    session.press(Key::up);
    EXPECT_EQ(session.text(), "x @Rosa");
    session.edit(session.text(), session.caret());  // the field reports the text it was given
    EXPECT_EQ(session.selectedCompletion(), 1U);
    const auto submission = session.commit("b1");
    ASSERT_TRUE(submission);
    EXPECT_EQ(submission->line, "x @Rosa");
    EXPECT_THAT(offers(), IsEmpty());
}

TEST_F(QuickAddSessionTest, returnNeverWaitsForAnOffer) {
    field.type("x @ro");
    ASSERT_FALSE(session.completions().empty());
    const auto submission = session.commit("b1");
    ASSERT_TRUE(submission);
    EXPECT_EQ(submission->line, "x @ro");
}

TEST_F(QuickAddSessionTest, escapeClosesTheOffersFirst) {
    field.type("x @ro");
    session.press(Key::down);
    EXPECT_EQ(session.press(Key::escape), Handled::yes);
    EXPECT_EQ(session.text(), "x @ro");
    EXPECT_THAT(offers(), IsEmpty());
    EXPECT_EQ(session.press(Key::escape), Handled::no);
    EXPECT_EQ(session.press(Key::down), Handled::no);
    EXPECT_EQ(session.press(Key::up), Handled::no);
    field.type("b");
    EXPECT_THAT(offers(), ElementsAre("@Robin"));
    session.moveCaret(1);
    EXPECT_THAT(offers(), IsEmpty());
}

TEST_F(QuickAddSessionTest, aClickedNameIsWrittenOutAndTypingGoesOnBehindIt) {
    field.type("x #des");
    session.choose(1);
    EXPECT_EQ(session.text(), "x #\"Design Review\" ");
    EXPECT_EQ(session.caret(), 19U);
    EXPECT_EQ(pieces(), "label:#\"Design Review\"");
    session.restore({"ask @ro about it", {}});
    field.goBehind("@ro").type("s");
    session.choose(0);
    EXPECT_EQ(session.text(), "ask @Rosa about it");
    EXPECT_EQ(session.caret(), 9U);
    session.choose(5);
    EXPECT_EQ(session.text(), "ask @Rosa about it");
    session.restore({"#\"des\" x", {}});
    field.goBehind("des").type("i");
    session.choose(0);
    EXPECT_EQ(session.text(), "#Design x");
}

TEST_F(QuickAddSessionTest, namesGivenBackAreNotOfferedAgain) {
    field.type("x @robin");
    session.giveBack(0);
    field.backspace(2);
    EXPECT_EQ(pieces(), "plain:@rob");
    EXPECT_THAT(offers(), IsEmpty());
}

TEST_F(QuickAddSessionTest, otherListsChangeWhatIsRecognisedAndOffered) {
    field.type("x @ro");
    session.press(Key::down);
    session.setLists(std::vector<QuickAddMember>{{"u-rolf", "Rolf", std::nullopt}}, std::nullopt);
    EXPECT_EQ(session.text(), "x @ro");
    EXPECT_EQ(pieces(), "assignee:@ro");
    EXPECT_THAT(offers(), ElementsAre("@Rolf"));
}

TEST_F(QuickAddSessionTest, staysConsistentWhateverTheUserDoes) {
    samples::LineGenerator random(31);
    for (std::size_t step = 0; step < 3000; ++step) {
        const std::size_t length = toUtf16(session.text()).size();
        switch (step % 11) {
            case 0:
                session.moveCaret(length / (1 + step % 3));
                break;
            case 1:
                session.giveBack(step % 4);
                break;
            case 2:
                session.toggleAtCaret();
                break;
            case 3:
                session.press(random.chance(2) ? Key::down : Key::up);
                break;
            case 4:
                session.choose(step % 2);
                break;
            case 5:
                session.edit(session.text().substr(0, 60), length);
                break;
            case 6:
                field.backspace(std::min<std::size_t>(session.caret(), step % 5));
                break;
            default:
                field.type(random.chance(3) ? " @r" : random.wildLine(1));
                break;
        }
        const std::size_t size = toUtf16(session.text()).size();
        ASSERT_LE(session.caret(), size);
        std::size_t end = 0;
        for (const auto& literal : session.literals()) {
            ASSERT_TRUE(end <= literal.start && literal.start < literal.end && literal.end <= size) << session.text();
            end = literal.end;
            for (const auto& token : session.tokens()) {
                ASSERT_TRUE(token.end <= literal.start || literal.end <= token.start) << session.text();
            }
        }
        const QuickAddContext context{{2025, 6, 10}, samples::boardContext().members, samples::boardContext().labels};
        ASSERT_EQ(QuickAdd::parse(session.text(), context, session.literals()), session.result());
    }
}

TEST(LiteralRanges, followEveryEdit) {
    using QuickAdd::changeBetween;
    const struct {
        const char16_t* before;
        const char16_t* after;
        std::size_t caret;
        std::vector<QuickAddRange> expected;  // of 2 … 5 in the text before
    } cases[] = {
        {u"a bcd e", u"xa bcd e", 1, {{3, 6}}},
        {u"a bcd e", u"a xbcd e", 3, {{3, 6}}},
        {u"a bcd e", u"a bxcd e", 4, {{2, 6}}},
        {u"a bcd e", u"a bcdx e", 6, {{2, 5}}},
        {u"a bcd e", u"a bcd ex", 8, {{2, 5}}},
        {u"a bcd e", u"a bd e", 3, {{2, 4}}},
        {u"a bcd e", u"abcd e", 1, {{1, 4}}},
        {u"a bcd e", u"acd e", 1, {{1, 3}}},
        {u"a bcd e", u"a bce", 4, {{2, 4}}},
        {u"a bcd e", u"a  e", 2, {}},
        {u"a bcd e", u"", 0, {}},
        {u"a bcd e", u"a xyz e", 5, {}},
        {u"aaaaaaaa", u"aaaaaaaaa", 2, {{3, 6}}},
        {u"aaaaaaaa", u"aaaaaaaaa", 4, {{2, 6}}},
        {u"aaaaaaaa", u"aaaaaaaaa", 6, {{2, 5}}},
        {u"aaaaaaaa", u"aaaaaaa", 0, {{1, 4}}},
    };
    for (const auto& [before, after, caret, expected] : cases) {
        std::vector<QuickAddRange> ranges{{2, 5}};
        QuickAdd::follow(ranges, changeBetween(before, after, caret));
        EXPECT_EQ(ranges, expected) << toUtf8(after) << " " << caret;
    }
}

TEST(TextOffsets, translateBetweenUnits) {
    const std::string text = "a\u00e9\U0001f600b";
    const TextOffsets offsets(text);
    const std::vector<std::array<std::size_t, 3>> places{{0, 0, 0}, {1, 1, 1}, {2, 2, 3}, {4, 3, 7}, {5, 4, 8}};
    for (const auto& [utf16, character, byte] : places) {
        EXPECT_EQ(offsets.characterAtUtf16(utf16), character);
        EXPECT_EQ(offsets.byteAtUtf16(utf16), byte);
        EXPECT_EQ(offsets.utf16AtCharacter(character), utf16);
        EXPECT_EQ(offsets.utf16AtByte(byte), utf16);
    }
    EXPECT_EQ(offsets.byteAtUtf16(3), 3U);
    EXPECT_EQ(offsets.utf16AtByte(5), 2U);
    EXPECT_EQ(offsets.byteAtUtf16(99), text.size());
}

}  // namespace
}  // namespace parvela
