#include <Platform/IncomingLimit.h>
#include <Platform/MainLoop.h>

#include <atomic>
#include <chrono>
#include <malloc.h>
#include <utility>
#include <vector>

namespace parvela::dbus {

namespace {

/// What GDBus keeps for a call besides its values.
constexpr std::size_t callOverhead = 2048;

/// How soon after a large message its memory goes back.
constexpr guint trimPause = 500;  // milliseconds
/// GLib keeps freed values for 15 seconds, and then until others of their size are freed.
constexpr std::chrono::seconds cachePause{16};
constexpr int valuesThatPassTheCache = 4096;

constexpr auto tooLong = std::pair{"app.parvela.Error.TooLong", "The text is too long."};
constexpr auto busy = std::pair{"app.parvela.Error.Busy", "Too many calls at once."};

/// Shared by the main loop's thread and the connection's.
struct State {
    std::atomic<std::size_t> waiting = 0;
    std::atomic<bool> willTrim = false;
    MainLoopTimer cacheTimer;  ///< the main loop's only
};
using Shared = std::shared_ptr<State>;

void destroy(gpointer shared) {
    delete static_cast<Shared*>(shared);
}

void emptyCache() {
    std::vector<VariantPtr> values;
    for (int i = 0; i < valuesThatPassTheCache; ++i) values.emplace_back(g_variant_new_string(""));
    values.clear();
    malloc_trim(0);
}

/// A message is taken apart into many small pieces, which the allocators would keep once they are free.
void trimSoon(const Shared& shared) {
    if (shared->willTrim.exchange(true)) return;
    g_timeout_add_full(
        G_PRIORITY_DEFAULT, trimPause,
        [](gpointer data) -> gboolean {
            State& state = **static_cast<Shared*>(data);
            state.willTrim = false;
            malloc_trim(0);
            state.cacheTimer = MainLoopTimer(cachePause, emptyCache);
            return G_SOURCE_REMOVE;
        },
        new Shared(shared), destroy);
}

/// Whether the call may wait too. Calls reach the main loop in the order of its sources, so when the one that is added
/// with the first call runs, all calls from before it have been delivered.
bool admit(const Shared& state, std::size_t size) {
    const std::size_t before = state->waiting.fetch_add(size);
    if (before == 0) {
        g_idle_add_full(
            G_PRIORITY_DEFAULT,
            [](gpointer data) -> gboolean {
                (*static_cast<Shared*>(data))->waiting = 0;
                return G_SOURCE_REMOVE;
            },
            new Shared(state), destroy);
    }
    return before + size <= IncomingLimit::mostWaiting;
}

void refuse(GDBusConnection* bus, GDBusMessage* call, const std::pair<const char*, const char*>& error) {
    if ((g_dbus_message_get_flags(call) & G_DBUS_MESSAGE_FLAGS_NO_REPLY_EXPECTED) != 0) return;
    const auto answer =
        Ref<GDBusMessage>::adopt(g_dbus_message_new_method_error_literal(call, error.first, error.second));
    g_dbus_connection_send_message(bus, answer.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
}

/// Runs on the connection's thread.
GDBusMessage* filter(GDBusConnection* bus, GDBusMessage* message, gboolean isIncoming, gpointer data) {
    if (!isIncoming) return message;
    const Shared& state = *static_cast<Shared*>(data);
    GVariant* const values = g_dbus_message_get_body(message);
    const std::size_t size = values ? g_variant_get_size(values) : 0;
    const bool isLarge = size > IncomingLimit::largestMessage;
    if (isLarge) trimSoon(state);
    const GDBusMessageType type = g_dbus_message_get_message_type(message);
    if (type == G_DBUS_MESSAGE_TYPE_METHOD_CALL) {
        if (!isLarge && admit(state, size + callOverhead)) return message;
        refuse(bus, message, isLarge ? tooLong : busy);
    } else if (type != G_DBUS_MESSAGE_TYPE_SIGNAL || !isLarge) {
        return message;
    }
    g_object_unref(message);
    return nullptr;
}

}  // namespace

struct IncomingLimit::Link {
    Bus bus;
    guint id = 0;
};

IncomingLimit::IncomingLimit(const Bus& bus) {
    const guint id = g_dbus_connection_add_filter(bus.get(), filter, new Shared(std::make_shared<State>()), destroy);
    link_.reset(new Link{bus, id});
}

void IncomingLimit::Ending::operator()(Link* link) const noexcept {
    g_dbus_connection_remove_filter(link->bus.get(), link->id);
    delete link;
}

}  // namespace parvela::dbus
