#include "HotKeys/HotKeyCenter.h"

#include <ParvelaKit/GLibPtr.h>
#include <Platform/MainLoop.h>

#include <array>
#include <limits>
#include <utility>

#include <fmt/format.h>
#include <gtk/gtk.h>

namespace parvela {

namespace {

constexpr std::uint32_t returnKey = 36;
constexpr std::uint32_t spaceKey = 49;

struct Sign {
    std::uint32_t modifier;
    const char* text;
    GdkModifierType mask;
};

/// In the order in which they are shown.
constexpr std::array<Sign, 4> signs{{{KeyModifiers::control, "⌃", GDK_CONTROL_MASK},
                                     {KeyModifiers::option, "⌥", GDK_ALT_MASK},
                                     {KeyModifiers::shift, "⇧", GDK_SHIFT_MASK},
                                     {KeyModifiers::command, "⌘", GDK_SUPER_MASK}}};

/// What the key types; empty for keys that type nothing that could be seen.
std::string characterOf(std::uint32_t keysym) {
    const gunichar character = gdk_keyval_to_unicode(keysym);
    if (character == 0 || !g_unichar_isgraph(character)) return {};
    char text[7] = {};
    g_unichar_to_utf8(character, text);
    return text;
}

}  // namespace

HotKeyCenter::HotKeyCenter(std::unique_ptr<HotKeyFacility> facility)
    : facility_(std::move(facility)), availability_(facility_->availability()) {
    facility_->onPressed = [this](std::uint32_t id, const std::optional<std::string>& token) { pressed(id, token); };
    facility_->onAvailabilityChanged = [this] { availability_.set(facility_->availability()); };
}

Task<std::optional<std::uint32_t>> HotKeyCenter::registerKey(HotKey key, Action action) {
    return registerKey(shared_from_this(), key, std::move(action));
}

Task<std::optional<std::uint32_t>> HotKeyCenter::registerKey(std::shared_ptr<HotKeyCenter> self, HotKey key,
                                                             Action action) {
    const std::uint32_t id = self->nextId_;
    if (id == std::numeric_limits<std::uint32_t>::max()) g_error("There are no more ids for shortcuts.");
    ++self->nextId_;
    auto taking = self->facility_->take(id, key);
    const bool taken = co_await taking;
    if (!taken) co_return std::nullopt;
    self->registrations_.emplace(id, Registration{key, std::move(action)});
    co_return id;
}

void HotKeyCenter::unregister(std::uint32_t id) {
    if (registrations_.erase(id) != 0) facility_->release(id);
}

void HotKeyCenter::pressed(std::uint32_t id, const std::optional<std::string>& activationToken) {
    runSoon([weak = weak_from_this(), id, activationToken] {
        const auto self = weak.lock();
        if (!self) return;
        const auto found = self->registrations_.find(id);
        if (found == self->registrations_.end()) return;
        const Registration registration = found->second;
        if (const auto receiver = self->diversion_.lock()) {
            (*receiver)(registration.key);
        } else {
            registration.action(activationToken);
        }
    });
}

Subscription HotKeyCenter::divert(std::function<void(HotKey)> receiver) {
    auto shared = std::make_shared<std::function<void(HotKey)>>(std::move(receiver));
    diversion_ = shared;
    return Subscription(std::move(shared));
}

std::string HotKeyCenter::displayString(HotKey key) const {
    std::string text;
    for (const Sign& sign : signs) {
        if (key.modifiers & sign.modifier) text += sign.text;
    }
    if (key.keyCode == returnKey) return text + "↩";
    if (key.keyCode == spaceKey) return text + "Space";
    const auto keysym = facility_->keysym(key.keyCode);
    const std::string name = keysym ? characterOf(*keysym) : "";
    return text + (name.empty() ? fmt::format("Key {}", key.keyCode) : name);
}

std::string HotKeyCenter::accelerator(HotKey key) const {
    const auto keysym = facility_->keysym(key.keyCode);
    if (!keysym) return {};
    int mask = 0;
    for (const Sign& sign : signs) {
        if (key.modifiers & sign.modifier) mask |= sign.mask;
    }
    const CharPtr name(gtk_accelerator_name(*keysym, static_cast<GdkModifierType>(mask)));
    return name ? name.get() : "";
}

}  // namespace parvela
