#include <ParvelaKit/DownloadName.h>
#include <ParvelaKit/Text.h>

#include <set>

namespace parvela {
namespace {

std::string name(std::string_view suggested, const std::set<std::string>& taken = {}) {
    return downloadName(suggested, [&taken](const std::string& candidate) { return taken.contains(candidate); });
}

TEST(DownloadName, isOneSafeName) {
    const struct {
        std::string suggested;
        std::string expected;
    } cases[] = {
        {"report.pdf", "report.pdf"},
        {"a/b:c.txt", "a-b-c.txt"},
        {"../../x", "..-..-x"},
        {"/etc/passwd", "-etc-passwd"},
        {"CON", "CON"},
        {std::string("a\0b\n\x7f.txt", 9), "a-b--.txt"},
        {"safe\u202Egpj.exe", "safe-gpj.exe"},
        {"a\u2028b\xff.txt", "a-b-.txt"},
        {"Grüße 👩‍👩‍👧.txt", "Grüße 👩‍👩‍👧.txt"},
    };
    for (const auto& [suggested, expected] : cases) EXPECT_EQ(name(suggested), expected) << suggested;
    for (const char* empty : {"", "  ", ".", "..", " ... "}) EXPECT_EQ(name(empty), "Parvela download") << empty;
}

TEST(DownloadName, aTakenNameGetsANumberBeforeItsExtension) {
    EXPECT_EQ(name("report.pdf", {"report.pdf"}), "report 2.pdf");
    EXPECT_EQ(name("report.pdf", {"report.pdf", "report 2.pdf", "report 3.pdf"}), "report 4.pdf");
    EXPECT_EQ(name("notes", {"notes"}), "notes 2");
    EXPECT_EQ(name(".profile", {".profile"}), ".profile 2");
    EXPECT_EQ(name("notes.", {"notes."}), "notes. 2");
    EXPECT_EQ(name("a.tar.gz", {"a.tar.gz"}), "a.tar 2.gz");
    EXPECT_EQ(name("", {"Parvela download"}), "Parvela download 2");
}

TEST(DownloadName, fitsTheFileSystemWithTheEnginesSuffix) {
    constexpr std::size_t limit = 255 - 11;  // ".wkdownload"
    std::string families;
    for (int i = 0; i < 40; ++i) families += "👩‍👩‍👧";
    const std::string marks = "e" + [] {
        std::string text;
        for (int i = 0; i < 400; ++i) text += "\u0301";
        return text;
    }();
    for (const std::string& long_ :
         {std::string(300, 'x'), families, marks, std::string(300, 'x') + ".pdf", "x." + std::string(300, 'e')}) {
        const auto first = name(long_);
        const auto second = name(long_, {first});
        for (const auto& result : {first, second}) {
            EXPECT_LE(result.size(), limit);
            EXPECT_GT(result.size(), limit - 30);
            EXPECT_TRUE(isValidUtf8(result));
        }
        EXPECT_NE(first, second);
    }
    EXPECT_TRUE(name(std::string(300, 'x') + ".pdf").ends_with("x.pdf"));
    EXPECT_EQ(name(families).size() % std::string("👩‍👩‍👧").size(), 0U);
}

}  // namespace
}  // namespace parvela
