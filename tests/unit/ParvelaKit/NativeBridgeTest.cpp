#include <ParvelaKit/NativeBridge.h>

#include <limits>

namespace parvela {
namespace {

using Bridge = NativeBridge;

TEST(NativeBridge, scriptsCarryTheEventAsJson) {
    const double infinity = std::numeric_limits<double>::infinity();
    const struct {
        Bridge::Event event;
        const char* payload;
    } cases[] = {
        {Bridge::StopTimer{"TSK-\"1\"\n"}, R"({"taskKey":"TSK-\"1\"\n","type":"stopTimer"})"},
        {Bridge::Navigate{"/b/1?view=\xff"}, "{\"path\":\"/b/1?view=\uFFFD\",\"type\":\"navigate\"}"},
        {Bridge::Fullscreen{true}, R"({"on":true,"type":"fullscreen"})"},
        {Bridge::Titlebar{true, 106.25}, R"({"buttonsRight":106.3,"inset":true,"type":"titlebar"})"},
        {Bridge::Titlebar{true, 106.04}, R"({"buttonsRight":106.0,"inset":true,"type":"titlebar"})"},
        {Bridge::Titlebar{false, -0.25}, R"({"buttonsRight":-0.3,"inset":false,"type":"titlebar"})"},
        {Bridge::Titlebar{false, infinity}, R"({"inset":false,"type":"titlebar"})"},
        {Bridge::Titlebar{false, 1e308}, R"({"inset":false,"type":"titlebar"})"},
        {Bridge::Titlebar{false, std::nullopt}, R"({"inset":false,"type":"titlebar"})"},
        {Bridge::RequestLink{}, R"({"type":"requestLink"})"},
        {Bridge::NewTask{}, R"({"type":"newTask"})"},
        {Bridge::ToggleSidebar{}, R"({"type":"toggleSidebar"})"},
    };
    for (const auto& [event, payload] : cases) {
        const std::string json = payload;
        EXPECT_EQ(Bridge::script(event),
                  "window.dispatchEvent(new CustomEvent(\"parvela-native\", { detail: " + json + " }));");
        EXPECT_EQ(
            Bridge::handledScript(event),
            "(function(){var d=" + json +
                ";window.dispatchEvent(new CustomEvent(\"parvela-native\",{detail:d}));return d.handled===true;})()");
    }
}

TEST(NativeBridge, thePathOfNavigationIsAnEscapedLiteral) {
    EXPECT_EQ(Bridge::navigateScript("/boards?x=\"1\""),
              R"((function(p){if(location.pathname+location.search!==p){history.pushState(null,'',p);})"
              R"(window.dispatchEvent(new PopStateEvent('popstate'));})(["/boards?x=\"1\""][0]);)");
}

TEST(NativeBridge, thePageLearnsAboutTheApplication) {
    EXPECT_EQ(
        Bridge::nativeInfoScript({Bridge::Platform::macos, "ID", "Robin's \"box\"", "w1", false}),
        R"(window.ParvelaNative = Object.freeze({"deviceId":"ID","deviceName":"Robin's \"box\"","features":["oauth"],)"
        R"("linkedWorkspaceId":"w1","platform":"macos","version":"1.0"});)"
        R"(document.documentElement.setAttribute("data-shell", "mac");)");
    EXPECT_EQ(Bridge::nativeInfoScript({Bridge::Platform::ios, "", "", std::nullopt, true}),
              R"(window.ParvelaNative = Object.freeze({"deviceId":"","deviceName":"Mac","features":["oauth"],)"
              R"("linkedWorkspaceId":null,"platform":"ios","version":"1.0"});)"
              R"(document.documentElement.setAttribute("data-native-embed", "");)");
    EXPECT_EQ(Bridge::userAgentSuffix(Bridge::Platform::macos), "ParvelaApp/1.0 (macOS)");
}

/// Sections of consecutive boards, "-" for none, and the groups expected as "title:count".
TEST(NativeBridge, boardsAreGroupedByConsecutiveSections) {
    const struct {
        std::vector<std::string> sections;
        std::vector<std::string> groups;
    } cases[] = {
        {{}, {}},
        {{"-", "-"}, {"-:2"}},
        {{"A", "A"}, {"-:2"}},
        {{"-", "-", "A", "-"}, {"-:2", "A:1", "-:1"}},
        {{"A", "B", "B"}, {"A:1", "B:2"}},
    };
    for (const auto& [sections, expected] : cases) {
        std::vector<BoardRef> boards;
        for (const auto& section : sections) {
            boards.push_back({"id" + std::to_string(boards.size()), "n", std::nullopt,
                              section == "-" ? std::nullopt : std::optional(section)});
        }
        std::vector<std::string> groups;
        std::vector<BoardRef> flattened;
        for (const auto& [title, members] : Bridge::sections(boards)) {
            groups.push_back(title.value_or("-") + ":" + std::to_string(members.size()));
            flattened.insert(flattened.end(), members.begin(), members.end());
        }
        EXPECT_EQ(groups, expected);
        EXPECT_EQ(flattened, boards);
    }
}

}  // namespace
}  // namespace parvela
