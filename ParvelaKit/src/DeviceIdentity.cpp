#include <ParvelaKit/DeviceIdentity.h>
#include <ParvelaKit/Text.h>
#include <ParvelaKit/TokenStore.h>

#include <algorithm>
#include <optional>

#include <glib.h>

namespace parvela {

struct DeviceIdentity::State {
    std::shared_ptr<SecretStore> secrets;
    MakeId makeId;
    AsyncMutex reading;
    std::optional<std::string> id;
    bool isStored = false;
};

DeviceIdentity::DeviceIdentity(std::shared_ptr<SecretStore> secrets, MakeId makeId)
    : state_(std::make_shared<State>(std::move(secrets), std::move(makeId))) {
}

Task<std::string> DeviceIdentity::id() const {
    return idOf(state_);
}

Task<std::string> DeviceIdentity::idOf(std::shared_ptr<State> state) {
    // Two callers at once must not make two ids.
    auto turn = state->reading.lock();
    const auto guard = co_await turn;
    if (state->isStored) co_return *state->id;

    const SecretItem item{"app.parvela.device", "device-id", std::nullopt};
    auto reading = state->secrets->read(item);
    const auto stored = co_await reading;
    if (stored && !stored->empty() && isValidUtf8(*stored)) {
        state->id = *stored;
        state->isStored = true;
        co_return *state->id;
    }
    if (!state->id) state->id = state->makeId();
    // A locked keyring may well hold an id; it must not be replaced.
    if (stored || stored.error() == SecretStatus::notFound) {
        auto writing = writeSecret(state->secrets, item, *state->id, "Parvela device id");
        state->isStored = co_await writing == SecretStatus::success;
    }
    co_return *state->id;
}

std::string DeviceIdentity::randomId() {
    const std::unique_ptr<char, decltype(&g_free)> uuid(g_uuid_string_random(), g_free);
    std::string id = uuid.get();
    std::ranges::transform(id, id.begin(), g_ascii_toupper);
    return id;
}

}  // namespace parvela
