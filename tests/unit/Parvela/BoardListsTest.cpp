#include "QuickAdd/BoardLists.h"
#include "support/LinkedDevice.h"

namespace parvela {
namespace {

using testing::ElementsAre;

std::string boardBody(const std::string& person) {
    return R"({"id":"b1","name":"B","description":"","icon":"","private":false,"lists":[],)"
           R"("labels":[{"id":"l1","name":"Design","tone":"blue"}],"people":[{"id":"p1","name":")" +
           person + R"(","color":"#fff","email":"r@example.org"},{"id":"p2","name":"Sam","color":"#fff"}],)" +
           R"("open":0,"done":0,"overdue":0})";
}

class BoardListsTest : public testing::Test, protected test::LinkedDevice {
protected:
    BoardListsTest() {
        lists->onChanged = [this](const std::string& board) { changes.push_back(board); };
    }

    std::string firstMember() const {
        const auto known = lists->known("b1");
        return known ? known->members.at(0).name : "unknown";
    }

    std::shared_ptr<BoardLists> lists = std::make_shared<BoardLists>(
        AppModel::create(session(), {clock, std::make_shared<NotificationCentre>(), [](const auto&) {}, [] {}}));
    std::vector<std::string> changes;
};

TEST_F(BoardListsTest, knowsPeopleAndLabelsInTheBoardsOrderOnceTheServiceHasAnswered) {
    EXPECT_EQ(lists->known("b1"), std::nullopt);
    network.answer("GET /api/v1/boards/b1", 200, boardBody("Robin"));
    lists->refresh("b1").detach();
    EXPECT_EQ(lists->known("b1"),
              (BoardLists::Lists{.members = {{"p1", "Robin", "r@example.org"}, {"p2", "Sam", std::nullopt}},
                                 .labels = {{"l1", "Design"}}}));
    EXPECT_THAT(changes, ElementsAre("b1"));
}

TEST_F(BoardListsTest, keepsWhatItKnowsWhileItAsksAndWhenTheServiceFails) {
    for (const char* const name : {"Robin", "Robin", "Rosa"}) {
        network.answer("GET /api/v1/boards/b1", 200, boardBody(name));
        lists->refresh("b1").detach();
    }
    EXPECT_THAT(changes, ElementsAre("b1", "b1")) << "an answer that changes nothing is silent";
    network.fail("GET /api/v1/boards/b1", TransportError::unreachable);
    lists->refresh("b1").detach();
    EXPECT_EQ(firstMember(), "Rosa");
}

TEST_F(BoardListsTest, asksOnceAtATimeAndDropsAnswersForAnotherAccount) {
    const auto late = network.hold("GET /api/v1/boards/b1");
    lists->refresh("b1").detach();
    lists->refresh("b1").detach();
    EXPECT_EQ(network.requests().size(), 1);

    lists->forget();
    network.answer("GET /api/v1/boards/b1", 200, boardBody("Rosa"));
    lists->refresh("b1").detach();
    late.resolve(test::FakeTransport::ok(boardBody("Robin")));
    EXPECT_EQ(firstMember(), "Rosa");
}

TEST_F(BoardListsTest, withoutATokenAsksNothingAndIsReadyToAskLater) {
    unlink();
    lists->refresh("b1").detach();
    EXPECT_TRUE(network.requests().empty());
    link();
    network.answer("GET /api/v1/boards/b1", 200, boardBody("Robin"));
    lists->refresh("b1").detach();
    EXPECT_EQ(firstMember(), "Robin");
}

}  // namespace
}  // namespace parvela
