#include <ParvelaKit/ShownTitle.h>

using namespace parvela;

TEST(ShownTitle, staysOnOneLineAndIsCutBetweenCharacters) {
    const struct {
        std::string title;
        std::size_t longest;
        std::string expected;
    } cases[] = {
        {"Write brief", 20, "Write brief"},
        {"Write brief", 11, "Write brief"},
        {"Write brief", 5, "Write…"},
        {"a\nb\tc\r\u2028d", 20, "a b c  d"},
        {"👩‍👩‍👧‍👦👩‍👩‍👧‍👦x", 1, "👩‍👩‍👧‍👦…"},
        {"e\u0301e\u0301", 1, "e\u0301…"},
        {"<b>&amp;</b>", 20, "<b>&amp;</b>"},
        {"", 5, ""},
    };
    for (const auto& [title, longest, expected] : cases) EXPECT_EQ(shortened(title, longest), expected) << title;
    EXPECT_EQ(shortened(std::string(10'000, 'x'), 300).size(), 300 + std::string("…").size());
}

TEST(ShownTitle, marksOfDirectionEndWithTheTitle) {
    const struct {
        std::string title;
        std::string inside;  ///< between the isolate that is put around it
    } cases[] = {
        {"plain", "plain"},
        {"שלום", "שלום"},
        {"\u2069\u202Eevil", "\u202Eevil"},                  // would have left the isolate
        {"a\u2067b\u2069c\u2069d", "a\u2067b\u2069cd"},      // its own pair stays
        {"a\u2066b\u2068c", "a\u2066b\u2068c\u2069\u2069"},  // what it leaves open is closed
    };
    for (const auto& [title, inside] : cases) EXPECT_EQ(shownTitle(title), "\u2068" + inside + "\u2069") << title;
}
