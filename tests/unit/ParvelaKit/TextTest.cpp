#include <ParvelaKit/Text.h>

namespace parvela {
namespace {

TEST(Text, trimsUnicodeWhiteSpaceOrBlanksOnly) {
    EXPECT_EQ(trimmed("\u00a0\u3000\n a b\t\u2003"), "a b");
    EXPECT_EQ(trimmedBlanks(" \t\na\n \t"), "\na\n");
    EXPECT_EQ(trimmed(" \n "), "");
    EXPECT_EQ(trimmed("\xff a"), "\xff a");
}

TEST(Text, countsAndCutsUserPerceivedCharacters) {
    const std::string family = "👩‍👩‍👧‍👦";
    EXPECT_EQ(characterCount(family + "e\u0301x"), 3U);
    EXPECT_EQ(firstCharacters(family + "e\u0301x", 2), family + "e\u0301");
    EXPECT_EQ(firstCharacters("ab", 9), "ab");
    EXPECT_EQ(firstCharacters("ab", 0), "");
}

TEST(Text, lowerCasesFully) {
    EXPECT_EQ(lowercased("ÄÖ İ ΣΑΣ"), "äö i\u0307 σας");
    EXPECT_EQ(asciiLowercased("AbÄ"), "abÄ");
}

TEST(Text, tellsInvalidUtf8) {
    EXPECT_TRUE(isValidUtf8("grün 👍"));
    for (const char* text : {"\xff", "\xc3", "\xed\xa0\x80", "\xc0\xaf"}) EXPECT_FALSE(isValidUtf8(text));
    EXPECT_EQ(toUtf8(toUtf16("a\xff")), "a\uFFFD");
}

}  // namespace
}  // namespace parvela
