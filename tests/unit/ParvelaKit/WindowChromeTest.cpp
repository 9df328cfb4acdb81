#include <ParvelaKit/BoardView.h>
#include <ParvelaKit/MenuTable.h>
#include <ParvelaKit/PageZoom.h>
#include <ParvelaKit/TitlebarLayout.h>

#include <limits>
#include <map>

namespace parvela {
namespace {

TEST(PageZoom, everyStepLandsOnATenth) {
    EXPECT_EQ(PageZoom::larger(1), 1.1);
    EXPECT_EQ(PageZoom::larger(2.95), 3);
    EXPECT_EQ(PageZoom::smaller(0.5), 0.5);
    EXPECT_EQ(PageZoom::larger(99), 3);
    EXPECT_EQ(PageZoom::larger(std::numeric_limits<double>::quiet_NaN()), 1);
    double zoom = 3;
    for (int tenths = 29; tenths >= 5; --tenths) EXPECT_EQ(zoom = PageZoom::smaller(zoom), tenths / 10.0);
    for (int tenths = 6; tenths <= 30; ++tenths) EXPECT_EQ(zoom = PageZoom::larger(zoom), tenths / 10.0);
}

TEST(TitlebarLayout, buttonsFollowThePagesZoom) {
    const TitlebarLayout::Buttons buttons{14, 16, 6};
    const struct {
        double scale, titlebarWidth, height, width, x, y, right;
    } cases[] = {
        {1, 1280, 76, 96, 26, 30, 80}, {1.5, 1280, 114, 109, 39, 49, 62}, {0.5, 1280, 38, 83, 13, 11, 134},
        {1, 50, 76, 50, 26, 30, 80},   {0.05, 1280, 20, 71, 1, 2, 550},
    };
    for (const auto& [scale, titlebarWidth, height, width, x, y, right] : cases) {
        const auto layout = TitlebarLayout::make(buttons, scale, titlebarWidth);
        EXPECT_EQ(layout.bandHeight, height) << scale;
        EXPECT_EQ(layout.bandWidth, width) << scale;
        EXPECT_THAT(layout.buttonX, testing::ElementsAre(x, x + 20, x + 40)) << scale;
        EXPECT_EQ(layout.buttonY, y) << scale;
        EXPECT_NEAR(layout.buttonsRight, right, 1e-9) << scale;
    }
    EXPECT_EQ(TitlebarLayout::firstMouseBand(1.5), 114);
    EXPECT_EQ(TitlebarLayout::make({14, 16, 6, 4}, 1, 1280).buttonsRight, 100);
}

TEST(TitlebarLayout, theUsersChoiceOfADoubleClickWins) {
    using enum TitlebarAction;
    const struct {
        std::optional<std::string_view> action;
        std::optional<bool> minimizes;
        const char* desktop;
        TitlebarAction expected;
    } cases[] = {
        {"Fill", true, "none", fill},     {"Maximize", true, "none", zoom}, {"Minimize", {}, "none", minimize},
        {"None", true, "minimize", none}, {"fill", true, "none", minimize}, {{}, false, "minimize", zoom},
        {{}, {}, "minimize", minimize},   {{}, {}, "none", none},           {{}, {}, "toggle-maximize", zoom},
        {"Nonsense", {}, "lower", zoom},
    };
    for (const auto& [action, minimizes, desktop, expected] : cases) {
        EXPECT_EQ(titlebarDoubleClick(action, minimizes, desktop), expected) << action.value_or("-") << " " << desktop;
    }
}

TEST(MenuTable, everyItemCanBeReachedAndNoKeyMeansTwoThings) {
    std::map<std::string, std::string_view> keys;
    for (const auto& menu : menuTable::menus()) {
        auto previous = menuTable::Kind::separator;
        for (const auto& item : menu.items) {
            if (item.kind == menuTable::Kind::separator) {
                EXPECT_NE(previous, menuTable::Kind::separator) << menu.title;
            } else {
                EXPECT_FALSE(item.title.empty() || item.action.empty()) << menu.title;
            }
            previous = item.kind;
            const auto accelerator = item.accelerator();
            if (accelerator.empty()) continue;
            const auto [found, isNew] = keys.try_emplace(accelerator, item.title);
            EXPECT_TRUE(isNew) << accelerator << ": " << found->second << ", " << item.title;
        }
        EXPECT_NE(previous, menuTable::Kind::separator) << menu.title;
    }
    const std::pair<const char*, const char*> expected[] = {
        {"<Control>n", "New Task"},
        {"<Control><Shift>n", "New Window"},
        {"<Control><Alt>r", "Reload Ignoring Cache"},
        {"<Control><Alt><Shift>v", "Paste and Match Style"},
        {"F9", "Toggle Sidebar"},
        {"F11", "Enter Full Screen"},
        {"<Control>comma", "Settings…"},
        {"<Control>5", "Timeline"},
        {"<Control>0", "Parvela Window"},
    };
    for (const auto& [accelerator, title] : expected) EXPECT_EQ(keys[accelerator], title);
}

TEST(MenuTable, itemsAreEnabledWhenWhatTheyNeedIsThere) {
    using menuTable::Needs;
    const menuTable::State nothing, window{.hasWindow = true};
    menuTable::State all{true, true, true, true, true, true, true};
    for (const auto needs : {Needs::nothing, Needs::window, Needs::page, Needs::backHistory, Needs::forwardHistory,
                             Needs::board, Needs::shell, Needs::updater}) {
        EXPECT_TRUE(isEnabled(needs, all));
        EXPECT_EQ(isEnabled(needs, nothing), needs == Needs::nothing);
        EXPECT_EQ(isEnabled(needs, window), needs == Needs::nothing || needs == Needs::window);
    }
    all.hasWindow = false;
    EXPECT_FALSE(isEnabled(Needs::backHistory, all));
}

TEST(BoardView, knowsTheBoardOfAPage) {
    const auto& server = ServerConfig::local();
    const ServerConfig based{ServerConfig::Mode::custom, Url::parse("https://h/base").value(),
                             Url::parse("https://h").value()};
    const struct {
        const char* page;
        const ServerConfig& server;
        std::string found;  // "id view", or "-"
    } cases[] = {
        {"http://localhost:3100/b/B1", server, "B1 0"},
        {"http://localhost:3100/b/B1/?view=list", server, "B1 1"},
        {"http://localhost:3100/b/a%2Fb%20c?x=1&view=timeline#y", server, "a/b c 4"},
        {"http://localhost:3100/b/B1?view=nonsense", server, "B1 0"},
        {"http://localhost:3100/b/B1?view", server, "B1 0"},
        {"http://localhost:3100/b/", server, "-"},
        {"http://localhost:3100/b/B1/more", server, "-"},
        {"http://localhost:3100/boards", server, "-"},
        {"http://127.0.0.1:3213/b/B1", server, "-"},
        {"https://h/base/b/B1?view=table", based, "B1 2"},
        {"https://h/b/B1", based, "-"},
    };
    for (const auto& [text, config, found] : cases) {
        const auto page = Url::parse(text).value();
        const auto board = BoardView::boardID(page, config);
        const auto view = BoardView::viewIndex(page, config);
        EXPECT_EQ(board ? *board + " " + std::to_string(view.value()) : "-", found) << text;
        if (board) EXPECT_EQ(BoardView::boardID(BoardView::page(*board, *view, config), config), board) << text;
    }
    EXPECT_EQ(BoardView::page("B1", 0, server).text(), "http://localhost:3100/b/B1");
    EXPECT_EQ(BoardView::page("a/b c?", 3, based).text(), "https://h/base/b/a%2Fb%20c%3F?view=calendar");
}

}  // namespace
}  // namespace parvela
