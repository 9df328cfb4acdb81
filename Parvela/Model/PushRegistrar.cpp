#include "Model/PushRegistrar.h"

#include <ParvelaKit/Endpoint.h>
#include <ParvelaKit/ParvelaAPI.h>

#include <utility>

namespace parvela {

namespace {

constexpr const char* namelessProgram = "app.parvela.mac";

}  // namespace

void PushRegistrar::setDeviceToken(std::string hex) {
    deviceToken_ = std::move(hex);
    sync().detach();
}

Task<void> PushRegistrar::sync() {
    const auto self = shared_from_this();
    if (!deviceToken_) co_return;
    const std::string token = *deviceToken_;
    const PushRegistration request = registration();
    auto making = session_.client();
    const auto api = co_await making;
    if (!api) co_return;
    auto call = api->send<OKResponse>(Endpoint::registerPush(request));
    const auto answer = co_await call;
    // Unlinking takes back what is remembered here.
    if (answer) session_.prefs().setPushToken(token);
}

PushRegistration PushRegistrar::registration() const {
    using Environment = PushRegistration::Environment;
    PushRegistration result;
    result.token = *deviceToken_;
    result.bundleId = program_.bundleId.empty() ? namelessProgram : program_.bundleId;
    result.environment = program_.entitledEnvironment == "production" ? Environment::production : Environment::sandbox;
    return result;
}

}  // namespace parvela
