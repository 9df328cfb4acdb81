#include "QuickAdd/PopoverPlacement.h"

#include <algorithm>

using namespace parvela;

namespace {

constexpr double width = 380;
constexpr double height = 520;

// Two monitors side by side, with a panel of 28 at the top of the left and of 30 at the bottom of the right one.
const std::vector<PopoverMonitor> twoMonitors{{{0, 0, 1280, 800}, {0, 28, 1280, 772}},
                                              {{1280, 0, 1920, 1080}, {1280, 0, 1920, 1050}}};

bool isInside(PopoverPoint place, const WindowFrame& area) {
    return place.x >= area.x && place.y >= area.y && place.x + width <= area.x + area.width &&
           place.y + height <= area.y + area.height;
}

}  // namespace

TEST(PopoverPlacement, standsBesideThePointOnItsMonitor) {
    const struct {
        const char* where;
        PopoverPoint point;
        PopoverPoint expected;
    } cases[] = {
        {"panel above", {640, 14}, {450, 36}},
        {"panel above, at the right end", {1270, 14}, {892, 36}},
        {"panel above, at the left end", {3, 14}, {8, 36}},
        {"panel below", {2000, 1065}, {1810, 522}},
        {"panel below, at the corner", {3190, 1065}, {2812, 522}},
        {"in the area, with room below", {600, 100}, {410, 118}},
        {"in the area, with room above only", {600, 700}, {410, 162}},
    };
    for (const auto& [where, point, expected] : cases) {
        EXPECT_EQ(placeBeside(point, width, height, twoMonitors), expected) << where;
    }
}

TEST(PopoverPlacement, isInsideOneMonitorWhateverThePoint) {
    for (double x = -50; x <= 3300; x += 47) {
        for (double y = -50; y <= 1200; y += 31) {
            const auto beside = placeBeside({x, y}, width, height, twoMonitors);
            const auto inView = placeInView({x, y}, width, height, twoMonitors);
            for (const auto place : {beside, inView}) {
                EXPECT_TRUE(std::ranges::any_of(twoMonitors,
                                                [&](const auto& monitor) { return isInside(place, monitor.area); }))
                    << x << "," << y;
            }
        }
    }
}

TEST(PopoverPlacement, withNothingPointedAtIsInTheMiddleAndOnATooSmallMonitorAtItsCorner) {
    EXPECT_EQ(placeInView({100, 100}, width, height, twoMonitors), (PopoverPoint{450, 112}));
    const std::vector<PopoverMonitor> tiny{{{0, 0, 340, 420}, {10, 20, 320, 400}}};
    EXPECT_EQ(placeInView({0, 0}, width, height, tiny), (PopoverPoint{18, 28}));
    EXPECT_EQ(placeBeside({300, 410}, width, height, tiny), (PopoverPoint{18, 28}));
}
