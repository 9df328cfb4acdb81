#include <ParvelaKit/MessageGate.h>

namespace parvela {
namespace {

constexpr std::int64_t second = 1'000'000;
/// Earns the next message.
constexpr std::int64_t each = second / MessageGate::perSecond + 1;

class MessageGateTest : public testing::Test {
protected:
    void post(const std::string& type, const std::string& body, std::int64_t now) { gate.post({type, "a", body}, now); }
    std::vector<std::string> taken() { return std::exchange(sent, {}); }

    std::vector<std::string> sent;
    MessageGate gate{[this](const MessageGate::Message& message) { sent.push_back(message.body); }};
};

TEST_F(MessageGateTest, letsOrdinaryPagesSpeakAtOnce) {
    for (int i = 0; i < MessageGate::burst; ++i) post("badge", std::to_string(i), 0);
    EXPECT_EQ(taken().size(), MessageGate::burst);
    EXPECT_FALSE(gate.isHolding());
    for (int i = 1; i <= 600; ++i) post("timer", std::to_string(i), i * each);
    EXPECT_EQ(taken().size(), 600U);
}

TEST_F(MessageGateTest, keepsTheNewestOfEachTypeOfAFlood) {
    for (int i = 0; i < 10'000; ++i) {
        post("timer", "timer " + std::to_string(i), 5 * second);
        post("badge", "badge " + std::to_string(i), 5 * second);
    }
    EXPECT_EQ(taken().size(), MessageGate::burst);
    gate.flush(5 * second);
    EXPECT_THAT(taken(), testing::IsEmpty());
    EXPECT_TRUE(gate.isHolding());
    gate.flush(6 * second);
    EXPECT_THAT(taken(), testing::ElementsAre("timer 9999", "badge 9999"));
    EXPECT_FALSE(gate.isHolding());
}

TEST_F(MessageGateTest, keepsTheOrderAndPassesNoMoreThanItsRate) {
    for (int i = 0; i < MessageGate::burst; ++i) post("x", "", 0);
    taken();
    for (const char* type : {"link", "timer", "link"}) post(type, type, 0);
    post("timer", "again", each);
    EXPECT_THAT(taken(), testing::IsEmpty()) << "nothing overtakes what is held";
    gate.flush(each);
    EXPECT_THAT(taken(), testing::ElementsAre("link"));
    gate.flush(2 * each);
    EXPECT_THAT(taken(), testing::ElementsAre("again"));
}

TEST_F(MessageGateTest, holdsNoMoreTypesThanThereAre) {
    for (int i = 0; i < 10'000; ++i) post(std::to_string(i), "", 0);
    gate.flush(3600 * second);
    EXPECT_LE(taken().size(), 2U * MessageGate::burst);
    EXPECT_FALSE(gate.isHolding());
}

}  // namespace
}  // namespace parvela
