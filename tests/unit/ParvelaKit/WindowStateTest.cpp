#include "support/MemoryStore.h"

#include <ParvelaKit/WindowState.h>

namespace parvela {
namespace {

TEST(WindowFrame, textAndFrameMatch) {
    EXPECT_EQ((WindowFrame{0, 0, 1280, 820}).text(), "{{0, 0}, {1280, 820}}");
    EXPECT_EQ((WindowFrame{-12.5, 1e3, 800, 520.25}).text(), "{{-12.5, 1000}, {800, 520.25}}");
    EXPECT_EQ(WindowFrame::parse(" {{-12.5,1000},{800,520.25}} "), (WindowFrame{-12.5, 1000, 800, 520.25}));
    for (const char* text :
         {"", "{{0, 0}, {0, 820}}", "{{0, 0}, {1280, -1}}", "{{0, 0}, {1280}}", "{{0, 0}, {1, 2}, {3, 4}}",
          "{{nan, 0}, {1, 2}}", "{{0, 0}, {inf, 2}}", "{{0, 0}, {1e999, 2}}", "{{a, 0}, {1, 2}}", "0 0 1 2"}) {
        EXPECT_EQ(WindowFrame::parse(text), std::nullopt) << text;
    }
}

TEST(WindowFrame, isMovedOntoAMonitorThatIsThere) {
    const WindowFrame left{0, 0, 1280, 800}, right{1280, 0, 1920, 1080};
    const struct {
        const char* what;
        WindowFrame frame;
        std::vector<WindowFrame> monitors;
        WindowFrame expected;
    } cases[] = {
        {"stays", {100, 50, 1000, 700}, {left}, {100, 50, 1000, 700}},
        {"across two", {1000, 50, 1000, 700}, {left, right}, {1000, 50, 1000, 700}},
        {"its monitor is gone", {1500, 50, 1000, 700}, {left}, {280, 50, 1000, 700}},
        {"nearest of two", {4000, -900, 900, 600}, {left, right}, {2300, 0, 900, 600}},
        {"top edge above", {100, -200, 1000, 700}, {left}, {100, 0, 1000, 700}},
        {"mostly below", {100, 790, 1000, 700}, {left}, {100, 100, 1000, 700}},
        {"larger than its monitor", {0, 0, 5000, 3000}, {left}, {0, 0, 1280, 800}},
        {"smaller than allowed", {10, 10, 5, 5}, {left}, {10, 10, 800, 520}},
        {"monitor smaller than allowed", {500, 500, 900, 600}, {{0, 0, 640, 480}}, {0, 0, 800, 520}},
        {"far beyond", {1e308, -1e308, 1e308, 1e308}, {left, right}, {0, 0, 1280, 800}},
        {"no monitors known", {9000, 9000, 10, 10}, {}, {9000, 9000, 10, 10}},
    };
    for (const auto& [what, frame, monitors, expected] : cases) {
        EXPECT_EQ(frame.onMonitors(monitors).text(), expected.text()) << what;
    }
}

TEST(WindowFrame, aNewWindowTakesThePlaceOfTheLastOne) {
    const auto store = std::make_shared<test::MemoryStore>();
    const Preferences preferences(store);
    EXPECT_EQ(newWindowFrame(preferences), std::nullopt);
    store->set("ParvelaMainWindow", std::string("10 20 900 600 0 0 1920 1055 "));
    EXPECT_EQ(newWindowFrame(preferences), (WindowFrame{10, 20, 900, 600}));
    store->set("ParvelaMainWindow", std::string("{{1, 2}, {900, 600}}"));
    EXPECT_EQ(newWindowFrame(preferences), (WindowFrame{1, 2, 900, 600}));
    preferences.setLastWindowFrame("{{3, 4}, {900, 600}}");
    EXPECT_EQ(newWindowFrame(preferences), (WindowFrame{3, 4, 900, 600}));
    preferences.setLastWindowFrame("damaged");
    EXPECT_EQ(newWindowFrame(preferences), (WindowFrame{1, 2, 900, 600}));
    store->set("ParvelaMainWindow", std::string("10 20"));
    EXPECT_EQ(newWindowFrame(preferences), std::nullopt);
}

TEST(WindowState, survivesItsJsonForm) {
    const WindowState state{
        {{"{{0, 0}, {1280, 820}}", {"https://h/a?b=\"c\"", "https://h/"}, 1, true, false}, {"", {}, 0, false, true}}};
    EXPECT_EQ(state.json(),
              R"({"groups":[{"frame":"{{0, 0}, {1280, 820}}","tabs":["https://h/a?b=\"c\"","https://h/"],"selected":1,)"
              R"("miniaturized":true},{"frame":"","tabs":[],"selected":0,"miniaturized":false,"maximized":true}]})");
    EXPECT_EQ(WindowState::fromJson(state.json()), state);
    EXPECT_EQ(WindowState::fromJson(WindowState{}.json()), WindowState{});
}

TEST(WindowState, oneDamagedGroupDamagesAll) {
    const std::string good = R"({"frame":"","tabs":["a"],"selected":0,"miniaturized":false,"more":1})";
    EXPECT_TRUE(WindowState::fromJson(R"({"groups":[)" + good + "]}"));
    for (const char* bad : {"7", "{}", R"({"tabs":[],"selected":0,"miniaturized":false})",
                            R"({"frame":"","tabs":[1],"selected":0,"miniaturized":false})",
                            R"({"frame":"","tabs":{},"selected":0,"miniaturized":false})",
                            R"({"frame":"","tabs":[],"selected":"0","miniaturized":false})",
                            R"({"frame":"","tabs":[],"selected":0.5,"miniaturized":false})",
                            R"({"frame":"","tabs":[],"selected":0,"miniaturized":1})",
                            R"({"frame":"","tabs":[],"selected":0,"miniaturized":false,"maximized":"no"})"}) {
        EXPECT_EQ(WindowState::fromJson(R"({"groups":[)" + good + "," + bad + "]}"), std::nullopt) << bad;
    }
    for (const char* bad : {"", "[]", "{}", R"({"groups":{}})", "{\"groups\":["}) {
        EXPECT_EQ(WindowState::fromJson(bad), std::nullopt) << bad;
    }
    EXPECT_EQ(WindowState::fromJson(std::string(100'000, '[')), std::nullopt);
}

TEST(WindowState, onlyPagesOfTheServerAreReopened) {
    const std::string own = "http://localhost:3100/b/1";
    const struct {
        std::vector<std::string> tabs;
        std::int64_t selected;
        std::vector<std::string> expected;
        std::int64_t expectedSelected;
    } cases[] = {
        {{own, own + "?q=a|b", own}, 2, {own, own + "?q=a|b", own}, 2},
        {{"https://evil.test/", own, "javascript:alert(1)", own}, 3, {own, own}, 1},
        {{own, own, "file:///etc/passwd"}, 2, {own, own}, 1},
        {{"about:blank", own}, 0, {own}, 0},
        {{own, own}, 9, {own, own}, 1},
        {{own, own}, -1, {own, own}, 0},
        {{"https://evil.test/", ""}, 1, {"http://localhost:3100"}, 0},
    };
    for (const auto& [tabs, selected, expected, expectedSelected] : cases) {
        const auto state = WindowState{{{"f", tabs, selected, true, false}}}.restorable(ServerConfig::local());
        EXPECT_EQ(state, (WindowState{{{"f", expected, expectedSelected, true, false}}})) << tabs[0] << " " << selected;
    }
    EXPECT_EQ((WindowState{{{"f", {}, 0, false, false}}}).restorable(ServerConfig::local()), WindowState{});
}

TEST(WindowState, thereIsAnEndToTabs) {
    const std::vector<std::string> many(400, "http://localhost:3100/");
    const WindowState::Group group{"f", many, 399, false, false};
    const auto state = WindowState{{group, group, group}}.restorable(ServerConfig::local());
    ASSERT_EQ(state.groups.size(), 2U);
    EXPECT_EQ(state.groups[0], group);
    EXPECT_EQ(state.groups[1].tabs.size(), WindowState::maximumTabs - 400);
    EXPECT_EQ(state.groups[1].selected, 99);
}

}  // namespace
}  // namespace parvela
