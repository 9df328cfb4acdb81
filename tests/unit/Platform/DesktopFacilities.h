#pragma once

#include "BusPeer.h"
#include "PrivateBus.h"

#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

namespace parvela::testing {

/// Tests against a session bus, which is the system's bus too. A program has one session bus, so they are one suite
/// however many files they stand in.
class DesktopFacilities : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        bus = new PrivateBus;
        setenv("DBUS_SYSTEM_BUS_ADDRESS", getenv("DBUS_SESSION_BUS_ADDRESS"), 1);
        setenv("GSETTINGS_BACKEND", "memory", 1);  // the user's own settings stay as they are
        session = new dbus::Bus(dbus::Bus::ref(bus->connection()));
    }
    static void TearDownTestSuite() {
        delete session;
        delete bus;
    }

    inline static PrivateBus* bus = nullptr;
    inline static dbus::Bus* session = nullptr;
};

/// Another program's call, which the tested object answers in this same main loop. Empty when it fails.
inline VariantPtr ask(const std::string& name, const char* path, const char* interface, const char* method,
                      GVariant* values) {
    const auto connection = dbus::Bus::adopt(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
    return runUntilDone(dbus::call(connection, {name, path, interface}, method, values));
}

}  // namespace parvela::testing
