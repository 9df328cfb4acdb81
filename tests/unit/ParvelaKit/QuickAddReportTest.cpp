#include "support/QuickAddSamples.h"

#include <ParvelaKit/QuickAddJson.h>
#include <ParvelaKit/QuickAddParser.h>
#include <ParvelaKit/QuickAddReport.h>

#include <nlohmann/json.hpp>

namespace parvela {
namespace {

std::string reportOf(std::string_view line, const QuickAddContext& context = samples::unknownLists()) {
    return QuickAdd::report(line, QuickAdd::parse(line, context), context.today);
}

TEST(QuickAddReport, showsWhatWasRecognisedUnderTheLine) {
    EXPECT_EQ(reportOf("Write brief tomorrow 9am !high #home"),
              "Write brief tomorrow 9am !high #home\n"
              "            ^^^^^^^^ ^^^ ^^^^^ ^^^^^ label: home\n"
              "            |        |   |\n"
              "            |        |   priority: High\n"
              "            |        time: 9 AM\n"
              "            date: Tomorrow\n"
              "\n"
              "title     Write brief\n"
              "date      Tomorrow (2025-06-11)\n"
              "time      9 AM (09:00)\n"
              "priority  High\n"
              "label     home\n");
    EXPECT_EQ(reportOf("Water plants"), "Water plants\n\ntitle     Water plants\n");
    EXPECT_EQ(reportOf("every mon @rob, @rob @zoe", samples::unknownLists()),
              "every mon @rob, @rob @zoe\n"
              "^^^^^^^^^ ^^^^  ^^^^ ^^^^ assignee: @zoe\n"
              "|         |     |\n"
              "|         |     assignee: @rob\n"
              "|         assignee: @rob\n"
              "repeat: Every Mon\n"
              "\n"
              "title     (none)\n"
              "date      Mon, Jun 16 (2025-06-16)\n"
              "assignee  @rob\n"
              "assignee  @zoe\n"
              "repeat    Every Mon\n");
}

TEST(QuickAddReport, alignsByWhatATerminalShows) {
    const std::vector<std::pair<const char*, const char*>> cases{
        {"\u4f1a\u8bae today", "\u4f1a\u8bae today\n     ^^^^^ date: Today\n"},
        {"\U0001f468\u200d\U0001f469\u200d\U0001f467 today",
         "\U0001f468\u200d\U0001f469\u200d\U0001f467 today\n   ^^^^^ date: Today\n"},
        {"\u2764\ufe0f x\u0301 today", "\u2764\ufe0f x\u0301 today\n     ^^^^^ date: Today\n"},
        {"a\ttoday", "a       today\n        ^^^^^ date: Today\n"},
        {"12345678\ttoday", "12345678        today\n                ^^^^^ date: Today\n"},
        {"\x1b[31m today", "\u241b[31m today\n      ^^^^^ date: Today\n"},
        {"\u202ea today", "<U+202E>a today\n          ^^^^^ date: Today\n"},
        {"a\r\ntoday", "a\u240d\u240atoday\n   ^^^^^ date: Today\n"},
        {"\xff today", "\uFFFD today\n  ^^^^^ date: Today\n"},
        {"@jos\u00e9", "@jos\u00e9\n^^^^^ assignee: @jos\u00e9\n"},
    };
    for (const auto& [line, expected] : cases) {
        const auto text = reportOf(line);
        EXPECT_EQ(text.substr(0, text.find("\n\n") + 1), expected);
    }
    QuickAddContext context = samples::unknownLists();
    context.members = {{"u", "Eve\x1b[2J", std::nullopt}};
    EXPECT_THAT(reportOf("@eve", context), testing::Not(testing::HasSubstr("\x1b")));
}

TEST(QuickAddReport, leavesLabelsAwayWhenThereAreTooMany) {
    std::string line;
    for (int i = 0; i < 20; ++i) line += "#l" + std::to_string(i) + " ";
    const auto text = reportOf(line);
    EXPECT_THAT(text, testing::HasSubstr("^^^^ ^^^^\n\ntitle     (none)\nlabel     l0\n"));
    EXPECT_EQ(std::ranges::count(text, '|'), 0);
}

TEST(QuickAddJson, holdsEveryField) {
    using nlohmann::json;
    QuickAddContext context = samples::boardContext();
    context.labels->push_back({"l\xff\"\\\n\x01", "odd\t\u00e9"});
    const std::string line = "Call \"Zo\u00eb\"\\ @rosa @robin #odd_\u00e9 5pm p1 every tue fri";
    std::string text;
    QuickAdd::appendJson(text, QuickAdd::parse(line, context));
    EXPECT_EQ(text.find_first_of("\n\t"), std::string::npos);
    const auto token = [](int start, int end, const char* kind, const char* value, const char* display) {
        return json{{"start", start}, {"end", end}, {"kind", kind}, {"value", value}, {"display", display}};
    };
    EXPECT_EQ(json::parse(text),
              (json{{"title", "Call \"Zo\u00eb\"\\"},
                    {"assigneeIds", {"u-rosa", "u-robin"}},
                    {"labelIds", {"l\uFFFD\"\\\n\u0001"}},
                    {"priority", "urgent"},
                    {"dueDate", "2025-06-10"},
                    {"dueTime", "17:00"},
                    {"repeat",
                     {{"freq", "weekly"},
                      {"weekdays", {2, 5}},
                      {"monthDay", nullptr},
                      {"rule", "weekly:2,5"},
                      {"display", "Every Tue & Fri"}}},
                    {"tokens",
                     {token(12, 17, "assignee", "u-rosa", "Rosa"), token(18, 24, "assignee", "u-robin", "Robin Ray"),
                      token(25, 31, "label", "l\uFFFD\"\\\n\u0001", "odd\t\u00e9"),
                      token(32, 35, "time", "17:00", "5 PM"), token(36, 38, "priority", "urgent", "Urgent"),
                      token(39, 52, "repeat", "weekly:2,5", "Every Tue & Fri")}}}));
    text.clear();
    QuickAdd::appendJson(text, QuickAddResult());
    EXPECT_EQ(text, R"({"title":"","assigneeIds":[],"labelIds":[],"priority":"none","dueDate":null,"dueTime":null,)"
                    R"("repeat":null,"tokens":[]})");
}

}  // namespace
}  // namespace parvela
