#include "Menu/DockMenu.h"
#include "support/LinkedDevice.h"

namespace parvela {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

class DockMenuTest : public testing::Test, protected test::LinkedDevice {
protected:
    std::vector<DesktopMenuEntry> entries() { return dockMenuEntries(*model, actions); }
    /// As they are read: separators as "-", what cannot be chosen in brackets.
    std::vector<std::string> labels() {
        std::vector<std::string> result;
        for (const auto& entry : entries()) {
            const bool canBeChosen = entry.action || !entry.children.empty();
            result.push_back(entry.kind == DesktopMenuEntry::Kind::separator ? "-"
                             : canBeChosen                                   ? entry.label
                                                                             : "[" + entry.label + "]");
        }
        return result;
    }

    static TaskSummary task(const std::string& key, const std::string& title) {
        return {.key = key, .title = title, .board = "Launch", .dueDate = "2026-06-10"};
    }

    std::shared_ptr<AppModel> model =
        AppModel::create(session(), {clock, std::make_shared<NotificationCentre>(), [](const auto&) {}, [] {}});
    std::vector<std::string> chosen;
    DockMenuActions actions{.newTask = [this] { chosen.emplace_back("new task"); },
                            .newWindow = [this] { chosen.emplace_back("new window"); },
                            .openDueTask = [this](const TaskSummary& one) { chosen.push_back(one.key); },
                            .openBoard = [this](const Board& one) { chosen.push_back(one.id); }};
};

TEST_F(DockMenuTest, saysWhenNothingIsDueOrTheListIsOnItsWay) {
    EXPECT_THAT(labels(),
                ElementsAre("New Task", "New Window", "-", "[Due Today]", "[Nothing due today]", "-", "[Boards]"));
    model->isLoadingDue.set(true);
    EXPECT_EQ(labels()[4], "[Loading…]");
    model->dueToday.set({task("TSK-1", "Brief")});
    EXPECT_EQ(labels()[4], "Brief") << "a list that is known stays while it is refreshed";
}

TEST_F(DockMenuTest, listsTasksAndBoardsAndOpensThem) {
    TaskSummary done = task("TSK-2", "Two\nlines\tof text");
    done.done = true;
    model->dueToday.set({task("TSK-1", std::string(10'000, 'x')), done});
    model->boards.set({Board{.id = "b1", .name = "Launch", .colorHex = "#FF0000"}, Board{.id = "b2", .name = "Home"}});
    const auto menu = entries();
    EXPECT_EQ(menu[4].label, std::string(60, 'x') + "…");
    EXPECT_EQ(menu[4].description, "TSK-1, Launch, 2026-06-10");
    EXPECT_EQ(menu[5].label, "✓ Two lines of text");
    EXPECT_EQ(menu[5].description, "TSK-2, Launch, 2026-06-10, done");
    const auto& boards = menu.back().children;
    ASSERT_EQ(boards.size(), 2U);
    EXPECT_THAT(boards[0].icon, StartsWith("\x89PNG"));
    EXPECT_THAT(boards[1].icon, StartsWith("\x89PNG"));
    EXPECT_NE(boards[0].icon, boards[1].icon) << "each in its colour";
    for (const auto* entry : {&menu[0], &menu[1], &menu[5], &boards[1]}) entry->action();
    EXPECT_THAT(chosen, ElementsAre("new task", "new window", "TSK-2", "b2"));
}

}  // namespace
}  // namespace parvela
