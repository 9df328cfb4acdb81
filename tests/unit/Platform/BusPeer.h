#pragma once

#include "PrivateBus.h"

#include <Platform/DBus.h>
#include <Platform/MainLoop.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <utility>

namespace parvela::testing {

/// Another program on the session bus, played by the test: it owns a name and answers calls in the same main loop.
class BusPeer {
public:
    using Call = std::function<GVariant*(const std::string& method, GVariant* values)>;

    /// `call` gives the answer's tuple, or null for one without values.
    BusPeer(const char* name, const char* path, const std::string& introspection, Call call,
            std::function<GVariant*(const std::string&)> get = {})
        : path_(path), bus_(connectAs(name)) {
        object_ = dbus::ExportedObject(bus_, path, introspection,
                                       {.call =
                                            [call = std::move(call)](const std::string& method, GVariant* values,
                                                                     GDBusMethodInvocation* invocation) {
                                                g_dbus_method_invocation_return_value(invocation, call(method, values));
                                            },
                                        .get = std::move(get)});
        if (!object_) throw std::runtime_error(std::string(name) + " can't be played");
    }
    BusPeer(const BusPeer&) = delete;
    BusPeer& operator=(const BusPeer&) = delete;
    ~BusPeer() {
        object_ = {};
        g_dbus_connection_close_sync(bus_.get(), nullptr, nullptr);
    }

    void emit(const char* interface, const char* signal, GVariant* values, const char* path = nullptr) const {
        g_dbus_connection_emit_signal(bus_.get(), nullptr, path ? path : path_.c_str(), interface, signal, values,
                                      nullptr);
    }

    const dbus::Bus& bus() const { return bus_; }

private:
    std::string path_;
    dbus::Bus bus_;
    dbus::ExportedObject object_;
};

/// Turns the main loop until the condition holds; false when it does not within ten seconds.
inline bool waitFor(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    const MainLoopTimer wakeUp(std::chrono::milliseconds(20), [] {}, MainLoopTimer::Kind::repeating);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        g_main_context_iteration(nullptr, TRUE);
    }
    return true;
}

/// Handles what is on its way: what was asked for so far is answered, also by objects that connect to the bus only now.
/// Connecting hops through another thread, even when the connection exists, so each turn does too.
inline void settle(const dbus::Bus& bus) {
    const dbus::Address self{"org.freedesktop.DBus", "/", "org.freedesktop.DBus"};
    for (int turn = 0; turn < 4; ++turn) {
        (void)runUntilDone(dbus::connect(G_BUS_TYPE_SESSION));
        (void)runUntilDone(dbus::call(bus, self, "GetId", nullptr));
    }
}

}  // namespace parvela::testing
