#include "Model/PushRegistrar.h"
#include "support/LinkedDevice.h"

#include <nlohmann/json.hpp>

namespace parvela {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* registerRoute = "POST /api/v1/devices/push";

class PushRegistrarTest : public testing::Test, protected test::LinkedDevice {
protected:
    std::shared_ptr<PushRegistrar> makeRegistrar(PushRegistrar::Program program) {
        return std::make_shared<PushRegistrar>(session(), std::move(program));
    }
};

TEST_F(PushRegistrarTest, sendsTheTokenWithWhatThePushServiceKnowsOfTheProgram) {
    const struct {
        PushRegistrar::Program program;
        std::string bundle, environment;
    } cases[] = {
        {{"app.parvela.Parvela", "production"}, "app.parvela.Parvela", "production"},
        {{"app.parvela.Parvela", "Production"}, "app.parvela.Parvela", "sandbox"},
        {{"", std::nullopt}, "app.parvela.mac", "sandbox"},
    };
    for (const auto& one : cases) {
        network.answer(registerRoute, 200, R"({"ok":true})");
        makeRegistrar(one.program)->setDeviceToken("00ff");
        const auto body = nlohmann::json::parse(network.requests().back().body.value_or(""));
        EXPECT_EQ(
            body,
            (nlohmann::json{
                {"token", "00ff"}, {"platform", "macos"}, {"bundleId", one.bundle}, {"environment", one.environment}}));
        EXPECT_EQ(prefs.pushToken(), "00ff");
    }
}

TEST_F(PushRegistrarTest, asksNothingWithoutATokenOrALink) {
    const auto registrar = makeRegistrar({"app"});
    EXPECT_TRUE(registrar->sync().done());
    unlink();
    registrar->setDeviceToken("00ff");
    EXPECT_THAT(network.requests(), IsEmpty());
    EXPECT_EQ(registrar->deviceToken(), "00ff") << "it is sent once the device is linked";
    link();
    network.answer(registerRoute, 200, R"({"ok":true})");
    EXPECT_TRUE(registrar->sync().done());
    EXPECT_EQ(prefs.pushToken(), "00ff");
}

TEST_F(PushRegistrarTest, aFailureIsIgnoredAndTheNextOccasionTriesAgain) {
    const auto registrar = makeRegistrar({"app"});
    network.fail(registerRoute, TransportError::unreachable);
    registrar->setDeviceToken("00ff");
    network.answer(registerRoute, 500);
    EXPECT_TRUE(registrar->sync().done());
    EXPECT_EQ(prefs.pushToken(), std::nullopt);
    network.answer(registerRoute, 200, R"({"ok":true})");
    EXPECT_TRUE(registrar->sync().done());
    EXPECT_THAT(network.requests(), SizeIs(3));
    EXPECT_EQ(prefs.pushToken(), "00ff");
}

}  // namespace
}  // namespace parvela
