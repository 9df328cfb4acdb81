#include <ParvelaKit/BridgeMessage.h>

#include <limits>

#include <nlohmann/json.hpp>

namespace parvela {
namespace {

using Message = BridgeMessage;

const Instant now{std::chrono::milliseconds(1'750'000'000'000)};

std::optional<Message> parse(std::string_view json) {
    return Message::parseText(json, now);
}

Message timer(std::string key, std::string title, std::optional<std::string> board, std::int64_t start) {
    return {Message::TimerStarted{
        {std::move(key), std::move(title), std::move(board), Instant(std::chrono::milliseconds(start))}}};
}

TEST(BridgeMessage, readsEveryKind) {
    const auto link = Url::parse("http://127.0.0.1:3213").value();
    const struct {
        const char* json;
        Message expected;
    } cases[] = {
        {R"({"type":"link","token":" tk_abc\n","apiBase":"http://127.0.0.1:3213","workspaceId":" w ","userName":"  "})",
         {Message::Link{"tk_abc", link, "w", std::nullopt, std::nullopt}}},
        {R"({"type":"link","token":"tk_abc","apiBase":"http://127.0.0.1:3213","workspaceId":"w","workspaceName":"N","userName":"U"})",
         {Message::Link{"tk_abc", link, "w", "N", "U"}}},
        {R"({"type":"unlinked"})", {Message::Unlinked{}}},
        {R"({"type":"windowDrag","more":1})", {Message::WindowDrag{}}},
        {R"({"type":"titlebarDoubleClick"})", {Message::TitlebarDoubleClick{}}},
        {R"({"type":"timer","state":" started ","taskKey":"  TSK-1 "})",
         timer("TSK-1", "TSK-1", std::nullopt, 1'750'000'000'000)},
        {R"({"type":"timer","state":"started","taskKey":"TSK-1","taskTitle":"T","boardName":"B","startedAt":1500.9})",
         timer("TSK-1", "T", "B", 1500)},
        {R"({"type":"timer","state":"started","taskKey":"TSK-1","startedAt":"1500"})",
         timer("TSK-1", "TSK-1", std::nullopt, 1'750'000'000'000)},
        {R"({"type":"timer","state":"stopped"})", {Message::TimerStopped{std::nullopt}}},
        {R"({"type":"timer","state":"stopped","taskKey":"TSK-2"})", {Message::TimerStopped{"TSK-2"}}},
        {R"({"type":"badge","count":-3})", {Message::Badge{0}}},
        {R"({"type":"badge","count":2.9})", {Message::Badge{2}}},
        {R"({"type":"badge","count":9e18})", {Message::Badge{9'000'000'000'000'000'000}}},
        {R"({"type":"shell"})", {Message::Shell{std::nullopt}}},
        {R"({"type":"shell","version":"1"})", {Message::Shell{std::nullopt}}},
        {R"({"type":"shell","version":true})", {Message::Shell{std::nullopt}}},
        {R"({"type":"shell","version":-1.9})", {Message::Shell{-1}}},
        {R"({"type":"boards","boards":[],"workspaceId":" w "})", {Message::Boards{"w", {}}}},
    };
    for (const auto& [json, expected] : cases) EXPECT_EQ(parse(json), expected) << json;
}

TEST(BridgeMessage, dropsWhatIsMalformedOrUnknown) {
    const char* cases[] = {
        "",
        "null",
        "\"badge\"",
        "[]",
        "{}",
        "[{\"type\":\"unlinked\"}]",
        "{\"type\":\"unlinked\"",
        "{\"type\":1}",
        R"({"type":"Link"})",
        R"({"type":" unlinked"})",
        R"({"type":"unknown"})",
        R"({"type":"badge"})",
        R"({"type":"badge","count":"3"})",
        R"({"type":"badge","count":true})",
        R"({"type":"badge","count":1e19})",
        R"({"type":"badge","count":-1e19})",
        R"({"type":"badge","count":1e999})",
        R"({"type":"shell","version":1e300})",
        R"({"type":"timer","taskKey":"T"})",
        R"({"type":"timer","state":"Started","taskKey":"T"})",
        R"({"type":"timer","state":"started"})",
        R"({"type":"timer","state":"started","taskKey":" "})",
        R"({"type":"timer","state":"started","taskKey":"T","startedAt":1e300})",
        R"({"type":"boards"})",
        R"({"type":"boards","boards":{}})",
        R"({"type":"boards","boards":[{"id":"1","name":"N"},7]})",
        R"({"type":"link","token":"tk_abc","apiBase":"https://h"})",
        R"({"type":"link","token":"abc","apiBase":"https://h","workspaceId":"w"})",
        R"({"type":"link","token":"Bearer tk_abc","apiBase":"https://h","workspaceId":"w"})",
        R"({"type":"link","token":"tk_abc","apiBase":"http://h","workspaceId":"w"})",
        R"({"type":"link","token":"tk_abc","apiBase":"https:///x","workspaceId":"w"})",
        R"({"type":"link","token":"tk_abc","apiBase":"a b","workspaceId":"w"})",
        R"({"type":"link","token":["tk_abc"],"apiBase":"https://h","workspaceId":"w"})",
    };
    for (const char* json : cases) EXPECT_EQ(parse(json), std::nullopt) << json;
    EXPECT_EQ(Message::parse({{"type", "badge"}, {"count", std::numeric_limits<double>::quiet_NaN()}}, now),
              std::nullopt);
}

TEST(BridgeMessage, boardsAreCleanedOneByOne) {
    const struct {
        nlohmann::json board;
        std::optional<BoardRef> expected;
    } cases[] = {
        {{{"id", " 1 "}, {"name", " N\n"}, {"color", "#a1b2c3"}, {"section", " S "}},
         BoardRef{" 1 ", "N", "#A1B2C3", "S"}},
        {{{"id", "1"}, {"name", "N"}, {"color", "a1b2c3"}, {"section", "  "}}, BoardRef{"1", "N", {}, {}}},
        {{{"id", "1"}, {"name", "N"}, {"color", "#a1b2"}}, BoardRef{"1", "N", {}, {}}},
        {{{"id", "1"}, {"name", "N"}, {"color", "#a1b2cg"}, {"section", 4}}, BoardRef{"1", "N", {}, {}}},
        {{{"id", "1"}, {"name", "N"}, {"colorHex", "#a1b2c3"}}, BoardRef{"1", "N", {}, {}}},
        {{{"id", "1"}, {"name", "N"}, {"color", "#\u00e91b2c"}}, BoardRef{"1", "N", {}, {}}},
        {{{"id", ""}, {"name", "N"}}, {}},
        {{{"id", 1}, {"name", "N"}}, {}},
        {{{"id", "1"}, {"name", " "}}, {}},
        {{{"id", "1"}}, {}},
        {nlohmann::json::object(), {}},
    };
    for (const auto& [board, expected] : cases) {
        const auto message = Message::parse({{"type", "boards"}, {"boards", nlohmann::json::array({board})}}, now);
        ASSERT_TRUE(message) << board;
        const auto& boards = std::get<Message::Boards>(message->content).boards;
        EXPECT_EQ(boards, expected ? std::vector{*expected} : std::vector<BoardRef>{}) << board;
    }
}

TEST(BridgeMessage, longListsAndNamesAreCut) {
    const std::string family = "👩‍👩‍👧";  // one character to its reader
    std::string name, section;
    for (int i = 0; i < 300; ++i) name += family;
    for (int i = 0; i < 101; ++i) section += "e\u0301";
    nlohmann::json boards = nlohmann::json::array();
    for (int i = 0; i < 600; ++i) boards.push_back({{"id", std::to_string(i)}, {"name", name}, {"section", section}});
    boards[0]["id"] = 0;  // refused, and still one of the 500 that are looked at

    const auto message = parse(nlohmann::json({{"type", "boards"}, {"boards", boards}}).dump());
    ASSERT_TRUE(message);
    const auto& kept = std::get<Message::Boards>(message->content).boards;
    ASSERT_EQ(kept.size(), 499U);
    EXPECT_EQ(kept.back().id, "499");
    EXPECT_EQ(kept.back().name.size(), 200 * family.size());
    EXPECT_EQ(kept.back().section->size(), 100U * 3);
}

TEST(BridgeMessage, hostileTextsEndQuietly) {
    const std::string deep(100'000, '[');
    EXPECT_EQ(parse(deep), std::nullopt);
    EXPECT_EQ(parse(R"({"type":"unlinked","x":)" + deep + std::string(100'000, ']') + "}"), std::nullopt);
    EXPECT_EQ(parse(R"({"type":"unlinked","x":")" + std::string(Message::maximumTextSize, 'x') + "\"}"), std::nullopt);
    EXPECT_EQ(parse(R"({"type":"unlinked","x":"\"[[[[}}}}\\"})"), Message{Message::Unlinked{}});
    EXPECT_EQ(parse("{\"type\":\"unlinked\",\"x\":\"\xff\"}"), std::nullopt);
}

TEST(BridgeMessage, halfASurrogatePairDoesNotCostTheMessage) {
    const struct {
        const char* title;
        const char* expected;
    } cases[] = {
        {R"(cut \ud83d)", "cut \uFFFD"},       {R"(\uDE00x)", "\uFFFDx"}, {R"(\ud83d\ud83d\ude00)", "\uFFFD😀"},
        {R"(\ud83d\\ude00)", "\uFFFD\\ude00"}, {R"(\\ud83d)", "\\ud83d"},
    };
    for (const auto& [title, expected] : cases) {
        const auto message =
            parse(R"({"type":"timer","state":"started","taskKey":"T","taskTitle":")" + std::string(title) + "\"}");
        EXPECT_EQ(message, timer("T", expected, std::nullopt, 1'750'000'000'000)) << title;
    }
}

TEST(TimerInfo, survivesItsJsonForm) {
    const TimerInfo info{"TSK-1", "Write \"it\"", "Böard", now};
    EXPECT_EQ(info.json(),
              R"({"taskKey":"TSK-1","taskTitle":"Write \"it\"","boardName":"Böard","startedAt":1750000000000})");
    EXPECT_EQ(TimerInfo::fromJson(info.json()), info);
    const TimerInfo bare{"TSK-1", "", std::nullopt, Instant{}};
    EXPECT_EQ(TimerInfo::fromJson(bare.json()), bare);
    for (const char* damaged :
         {"", "1", R"({"taskKey":"","taskTitle":"T","startedAt":1})", R"({"taskKey":"T","startedAt":1})",
          R"({"taskKey":"T","taskTitle":"T","startedAt":"1"})"}) {
        EXPECT_EQ(TimerInfo::fromJson(damaged), std::nullopt) << damaged;
    }
}

}  // namespace
}  // namespace parvela
