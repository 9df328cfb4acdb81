#include "HotKeys/QuickAddHotKey.h"

#include <utility>

namespace parvela {

Task<bool> QuickAddHotKey::apply() {
    return apply(shared_from_this());
}

Task<bool> QuickAddHotKey::apply(std::shared_ptr<QuickAddHotKey> self) {
    const std::uint64_t wish = ++self->wishes_;
    if (const auto id = std::exchange(self->hotKeyID_, std::nullopt)) self->center->unregister(*id);
    if (!self->preferences_.hotKeyEnabled()) {
        self->accelerator.set("");
        self->state.set(State::off);
        co_return true;
    }
    self->state.set(State::waiting);
    const HotKey key = self->key();
    auto registering = self->center->registerKey(key, self->action_);
    const auto id = co_await registering;
    if (wish != self->wishes_) {
        if (id) self->center->unregister(*id);
        co_return false;
    }
    self->hotKeyID_ = id;
    // Behind the portal the user may have chosen other keys.
    const bool areKnown = id && self->center->availability().get() == HotKeyAvailability::keys;
    self->accelerator.set(areKnown ? self->center->accelerator(key) : "");
    self->state.set(id ? State::works : State::refused);
    co_return id.has_value();
}

}  // namespace parvela
