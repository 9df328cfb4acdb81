#include "DesktopFacilities.h"
#include "support/TemporaryFolder.h"

#include <Platform/FileRevealer.h>
#include <Platform/GlobalShortcutsPortal.h>
#include <Platform/LauncherBadge.h>
#include <Platform/MainLoop.h>
#include <Platform/SleepMonitor.h>
#include <Platform/TimeZoneMonitor.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>

namespace parvela {
namespace {

using testing::BusPeer;
using testing::DesktopFacilities;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using testing::settle;
using testing::waitFor;

TEST_F(DesktopFacilities, theBadgeIsSaidAtEveryChangeAndTakenBackAtTheEnd) {
    std::vector<std::string> said;
    const guint subscription = g_dbus_connection_signal_subscribe(
        session->get(), nullptr, "com.canonical.Unity.LauncherEntry", "Update", nullptr, nullptr,
        G_DBUS_SIGNAL_FLAGS_NONE,
        [](GDBusConnection*, const char*, const char*, const char*, const char*, GVariant* values, gpointer data) {
            static_cast<std::vector<std::string>*>(data)->emplace_back(CharPtr(g_variant_print(values, FALSE)).get());
        },
        &said, nullptr);
    {
        LauncherBadge badge("app.parvela.Parvela");
        badge.setCount(5);
        ASSERT_TRUE(waitFor([&] { return said.size() == 1; }));
        badge.setCount(5);
        badge.setCount(-1);
        ASSERT_TRUE(waitFor([&] { return said.size() == 2; }));
        badge.setCount(7);
        ASSERT_TRUE(waitFor([&] { return said.size() == 4; })) << "it is said again for docks that come late";
    }
    ASSERT_TRUE(waitFor([&] { return said.size() == 5; }));
    const std::string uri = "('application://app.parvela.Parvela.desktop', {'count': <int64 ";
    EXPECT_EQ(said[0], uri + "5>, 'count-visible': <true>})");
    EXPECT_EQ(said[1], uri + "0>, 'count-visible': <false>})");
    EXPECT_EQ(said[3], uri + "7>, 'count-visible': <true>})");
    EXPECT_EQ(said[4], uri + "0>, 'count-visible': <false>})");
    {
        LauncherBadge launcher("app.parvela.Parvela");
        launcher.setMenu("/menu");
        ASSERT_TRUE(waitFor([&] { return said.size() == 6; }));
    }
    ASSERT_TRUE(waitFor([&] { return said.size() == 7; }));
    EXPECT_THAT(said[5], HasSubstr("'quicklist': <'/menu'>"));
    EXPECT_THAT(said[6], HasSubstr("'quicklist': <''>")) << "the menu goes with the program";
    g_dbus_connection_signal_unsubscribe(session->get(), subscription);
}

TEST_F(DesktopFacilities, wakingUpIsToldOnceForEachSleep) {
    const BusPeer logind("org.freedesktop.login1", "/org/freedesktop/login1",
                         "<node><interface name='org.freedesktop.login1.Manager'/></node>",
                         [](const std::string&, GVariant*) -> GVariant* { return nullptr; });
    int wakes = 0;
    auto monitor = std::make_unique<SleepMonitor>([&] { ++wakes; });
    // The monitor's connection was asked for first.
    const dbus::Bus system = runUntilDone(dbus::connect(G_BUS_TYPE_SYSTEM));
    settle(system);
    const auto say = [&](GVariant* values) {
        logind.emit("org.freedesktop.login1.Manager", "PrepareForSleep", values);
    };
    say(g_variant_new("(b)", TRUE));
    say(g_variant_new("(s)", "of another shape"));
    settle(system);
    EXPECT_EQ(wakes, 0);
    say(g_variant_new("(b)", FALSE));
    ASSERT_TRUE(waitFor([&] { return wakes == 1; }));
    monitor.reset();
    say(g_variant_new("(b)", FALSE));
    settle(system);
    EXPECT_EQ(wakes, 1);
}

TEST_F(DesktopFacilities, aFileIsRevealedByTheFileManager) {
    std::vector<std::string> shown;
    const BusPeer manager("org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
                          R"xml(<node><interface name="org.freedesktop.FileManager1"><method name="ShowItems">
        <arg type="as" direction="in"/><arg type="s" direction="in"/></method></interface></node>)xml",
                          [&](const std::string&, GVariant* values) -> GVariant* {
                              shown.emplace_back(CharPtr(g_variant_print(values, FALSE)).get());
                              return nullptr;
                          });
    const auto file = bus->folder() / "a b#ü.txt";
    std::ofstream(file) << "x";
    EXPECT_TRUE(runUntilDone(revealFile(file, "token")));
    ASSERT_EQ(shown.size(), 1U);
    EXPECT_THAT(shown[0], ::testing::EndsWith("/a%20b%23%C3%BC.txt'], 'token')"));
}

/// The desktop's portal as far as it concerns shortcuts.
class Portal {
public:
    guint32 answer = 0;  ///< 0 is yes
    std::vector<std::string> calls;

    void activate(const char* path, const char* id) const {
        GVariantBuilder options;
        g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
        g_variant_builder_add(&options, "{sv}", "activation_token", g_variant_new_string("token"));
        peer_.emit("org.freedesktop.portal.GlobalShortcuts", "Activated",
                   g_variant_new("(osta{sv})", path, id, G_GUINT64_CONSTANT(1), &options));
    }
    void close(const char* path) const { peer_.emit("org.freedesktop.portal.Session", "Closed", nullptr, path); }

    static constexpr const char* session = "/org/freedesktop/portal/desktop/session/1";

private:
    GVariant* call(const std::string& method, GVariant* values) {
        calls.push_back(method + CharPtr(g_variant_print(values, FALSE)).get());
        const VariantPtr options(g_variant_get_child_value(values, g_variant_n_children(values) - 1));
        const char* token = nullptr;
        g_variant_lookup(options.get(), "handle_token", "&s", &token);
        std::string sender =
            g_dbus_connection_get_unique_name(
                Ref<GDBusConnection>::adopt(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr)).get()) +
            1;
        std::ranges::replace(sender, '.', '_');
        const std::string handle = "/org/freedesktop/portal/desktop/request/" + sender + "/" + token;
        const char* const results =
            method == "CreateSession" ? "{'session_handle': <'/org/freedesktop/portal/desktop/session/1'>}"
                                      : "{'shortcuts': <[('quick-add', {'trigger_description': <'Ctrl+Alt+Space'>})]>}";
        GVariant* const dictionary = g_variant_parse(G_VARIANT_TYPE_VARDICT, results, nullptr, nullptr, nullptr);
        // The answer may overtake the reply.
        peer_.emit("org.freedesktop.portal.Request", "Response", g_variant_new("(u@a{sv})", answer, dictionary),
                   handle.c_str());
        return g_variant_new("(o)", handle.c_str());
    }

    BusPeer peer_{"org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
                  R"xml(<node><interface name="org.freedesktop.portal.GlobalShortcuts">
        <method name="CreateSession"><arg type="a{sv}" direction="in"/><arg type="o" direction="out"/></method>
        <method name="BindShortcuts"><arg type="o" direction="in"/><arg type="a(sa{sv})" direction="in"/>
          <arg type="s" direction="in"/><arg type="a{sv}" direction="in"/><arg type="o" direction="out"/></method>
        <property name="version" type="u" access="read"/>
      </interface></node>)xml",
                  [this](const std::string& method, GVariant* values) { return call(method, values); },
                  [](const std::string&) { return g_variant_new_uint32(1); }};
    dbus::ExportedObject session_{
        peer_.bus(),
        session,
        R"xml(<node><interface name="org.freedesktop.portal.Session"><method name="Close"/></interface></node>)xml",
        {.call = [this](const std::string& method, GVariant*, GDBusMethodInvocation* invocation) {
            calls.push_back(method);
            g_dbus_method_invocation_return_value(invocation, nullptr);
        }}};
};

constexpr HotKey controlOptionSpace{.keyCode = 49, .modifiers = 6144};

TEST_F(DesktopFacilities, thePortalsShortcutIsBoundPressedAndTakenBack) {
    GlobalShortcutsPortal shortcuts;
    EXPECT_EQ(runUntilDone(shortcuts.bind(controlOptionSpace, "Quick Add")).error(),
              GlobalShortcutsPortal::Problem::unavailable);

    auto portal = std::make_unique<Portal>();
    std::vector<std::string> events;
    shortcuts.onActivated = [&](const std::optional<std::string>& token) { events.push_back(token.value_or("-")); };
    shortcuts.onRevoked = [&] { events.emplace_back("revoked"); };
    EXPECT_EQ(runUntilDone(shortcuts.bind(controlOptionSpace, "Quick Add")), "Ctrl+Alt+Space");
    ASSERT_EQ(portal->calls.size(), 2U);
    EXPECT_THAT(portal->calls[1], HasSubstr("'preferred_trigger': <'CTRL+ALT+space'>"));
    EXPECT_THAT(portal->calls[1], HasSubstr("'description': <'Quick Add'>"));
    portal->activate(Portal::session, "another");
    portal->activate("/of/somebody/else", "quick-add");
    portal->activate(Portal::session, "quick-add");
    portal->close(Portal::session);
    ASSERT_TRUE(waitFor([&] { return events.size() == 2; }));
    EXPECT_THAT(events, ElementsAre("token", "revoked"));

    EXPECT_EQ(runUntilDone(shortcuts.bind(controlOptionSpace, "Quick Add")), "Ctrl+Alt+Space");
    portal.reset();
    ASSERT_TRUE(waitFor([&] { return events.size() == 3; })) << "a portal that ends says nothing";
    EXPECT_EQ(events.back(), "revoked");
}

TEST_F(DesktopFacilities, aSessionThatIsNoLongerWantedIsClosed) {
    Portal portal;
    GlobalShortcutsPortal shortcuts;
    auto binding = shortcuts.bind(controlOptionSpace, "Quick Add");
    ASSERT_TRUE(waitFor([&] { return portal.calls.size() == 1; }));
    shortcuts.unbind();
    EXPECT_EQ(runUntilDone(std::move(binding)).error(), GlobalShortcutsPortal::Problem::refused);
    ASSERT_TRUE(waitFor([&] { return portal.calls.size() == 2; }));
    EXPECT_EQ(portal.calls.back(), "Close");
}

TEST_F(DesktopFacilities, thePortalsRefusalIsToldFromItsAbsence) {
    GlobalShortcutsPortal shortcuts;
    EXPECT_FALSE(runUntilDone(GlobalShortcutsPortal::isOffered()));
    Portal portal;
    EXPECT_TRUE(runUntilDone(GlobalShortcutsPortal::isOffered()));
    portal.answer = 1;
    EXPECT_EQ(runUntilDone(shortcuts.bind(controlOptionSpace, "Quick Add")).error(),
              GlobalShortcutsPortal::Problem::refused);
}

TEST(TimeZoneMonitor, tellsWhenTheSystemIsGivenAnotherZone) {
    const test::TemporaryFolder folder;
    std::filesystem::create_symlink("/usr/share/zoneinfo/Europe/Berlin", folder.path() / "localtime");
    int changes = 0;
    const TimeZoneMonitor monitor([&] { ++changes; }, folder.path() / "localtime");
    std::filesystem::create_symlink("/usr/share/zoneinfo/Asia/Tokyo", folder.path() / "new");
    std::filesystem::rename(folder.path() / "new", folder.path() / "localtime");
    bool isLate = false;
    const MainLoopTimer limit(std::chrono::seconds(10), [&] { isLate = true; });
    while (changes == 0 && !isLate) g_main_context_iteration(nullptr, TRUE);
    EXPECT_GT(changes, 0);
}

}  // namespace
}  // namespace parvela
