#include "BusPeer.h"
#include "PrivateBus.h"
#include "PrivateDisplay.h"

#include <Platform/FileRevealer.h>
#include <Platform/GlobalShortcutsPortal.h>
#include <Platform/LauncherBadge.h>
#include <Platform/NotificationService.h>
#include <Platform/SleepMonitor.h>
#include <Platform/TrayItem.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <memory>

namespace parvela {
namespace {

using testing::BusPeer;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using testing::settle;
using testing::waitFor;

class DesktopFacilities : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        bus = new testing::PrivateBus;
        setenv("DBUS_SYSTEM_BUS_ADDRESS", getenv("DBUS_SESSION_BUS_ADDRESS"), 1);
        session = new dbus::Bus(dbus::Bus::ref(bus->connection()));
    }
    static void TearDownTestSuite() {
        delete session;
        delete bus;
    }

    static testing::PrivateBus* bus;
    static dbus::Bus* session;
};

testing::PrivateBus* DesktopFacilities::bus = nullptr;
dbus::Bus* DesktopFacilities::session = nullptr;

VariantPtr ask(const std::string& name, const char* path, const char* interface, const char* method, GVariant* values) {
    dbus::Bus bus = dbus::Bus::adopt(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
    return runUntilDone(dbus::call(bus, {name, path, interface}, method, values));
}

// ---- Notifications

constexpr const char* notificationsInterface = "org.freedesktop.Notifications";

/// A notification service that keeps what it is told.
class NotificationDaemon {
public:
    explicit NotificationDaemon(std::vector<std::string> capabilities) : capabilities_(std::move(capabilities)) {}

    struct Shown {
        guint32 replaced;
        std::string title, body;
        std::size_t actions;
    };
    std::vector<Shown> shown;
    std::vector<guint32> withdrawn;

    void emit(const char* signal, GVariant* values) const { peer_.emit(notificationsInterface, signal, values); }

private:
    GVariant* call(const std::string& method, GVariant* values) {
        if (method == "GetCapabilities") {
            GVariantBuilder list;
            g_variant_builder_init(&list, G_VARIANT_TYPE_STRING_ARRAY);
            for (const auto& capability : capabilities_) g_variant_builder_add(&list, "s", capability.c_str());
            return g_variant_new("(as)", &list);
        }
        if (method == "CloseNotification") {
            withdrawn.push_back(0);
            g_variant_get(values, "(u)", &withdrawn.back());
            return nullptr;
        }
        guint32 replaced = 0;
        const char* title = nullptr;
        const char* body = nullptr;
        StringsPtr actions;
        g_variant_get(values, "(&su&s&s&s^as@a{sv}i)", nullptr, &replaced, nullptr, &title, &body, actions.out(),
                      nullptr, nullptr);
        shown.push_back({replaced, title, body, g_strv_length(actions.get())});
        return g_variant_new("(u)", replaced != 0 ? replaced : static_cast<guint32>(100 + shown.size()));
    }

    std::vector<std::string> capabilities_;
    BusPeer peer_{notificationsInterface, "/org/freedesktop/Notifications",
                  R"xml(<node><interface name="org.freedesktop.Notifications">
        <method name="GetCapabilities"><arg type="as" direction="out"/></method>
        <method name="CloseNotification"><arg type="u" direction="in"/></method>
        <method name="Notify"><arg type="s" direction="in"/><arg type="u" direction="in"/><arg type="s" direction="in"/>
          <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="as" direction="in"/>
          <arg type="a{sv}" direction="in"/><arg type="i" direction="in"/><arg type="u" direction="out"/></method>
      </interface></node>)xml",
                  [this](const std::string& method, GVariant* values) { return call(method, values); }};
};

TEST_F(DesktopFacilities, notificationsFollowWhatTheServiceCanDo) {
    NotificationService service({"Parvela", "app.parvela.Parvela"});
    const DesktopNotification risky{"a", "1 < 2 & \xFF", "<b>Tom</b> & Jerry\nline"};
    {
        NotificationDaemon rich({"actions", "body", "body-markup"});
        service.post(risky);
        ASSERT_TRUE(waitFor([&] { return rich.shown.size() == 1; }));
        EXPECT_EQ(rich.shown[0].title, "1 < 2 & \u{FFFD}");
        EXPECT_EQ(rich.shown[0].body, "&lt;b&gt;Tom&lt;/b&gt; &amp; Jerry\nline");
        EXPECT_EQ(rich.shown[0].actions, 2U);
        settle(*session);
    }
    settle(*session);
    NotificationDaemon plain({"body"});
    settle(*session);
    service.post(risky);
    ASSERT_TRUE(waitFor([&] { return plain.shown.size() == 1; }));
    EXPECT_EQ(plain.shown[0].body, risky.body);
    EXPECT_EQ(plain.shown[0].actions, 0U);
    EXPECT_EQ(plain.shown[0].replaced, 0U) << "another service does not know the number of the one before";
    service.post({"b", std::string(5000, 'x'), std::string(50'000, 'y')});
    ASSERT_TRUE(waitFor([&] { return plain.shown.size() == 2; }));
    EXPECT_EQ(plain.shown[1].title, std::string(200, 'x') + "…");
    EXPECT_LT(plain.shown[1].body.size(), 2010U);
}

TEST_F(DesktopFacilities, notificationsOfOneIdentifierReplaceEachOther) {
    NotificationDaemon daemon({"actions", "body"});
    NotificationService service({"Parvela", "app.parvela.Parvela"});
    // Posted before the first one has its number.
    for (const char* title : {"one", "two", "three"}) service.post({"same", title, ""});
    service.post({"other", "four", ""});
    ASSERT_TRUE(waitFor([&] { return daemon.shown.size() == 4; }));
    EXPECT_EQ(daemon.shown[0].replaced, 0U);
    EXPECT_EQ(daemon.shown[1].replaced, 101U);
    EXPECT_EQ(daemon.shown[2].replaced, 101U);
    EXPECT_EQ(daemon.shown[3].replaced, 0U);

    daemon.emit("NotificationClosed", g_variant_new("(uu)", 101U, 2U));
    settle(*session);
    service.post({"same", "five", ""});
    ASSERT_TRUE(waitFor([&] { return daemon.shown.size() == 5; }));
    EXPECT_EQ(daemon.shown[4].replaced, 0U);
    service.withdraw("other");
    service.withdraw("never shown");
    ASSERT_TRUE(waitFor([&] { return !daemon.withdrawn.empty(); }));
    settle(*session);
    EXPECT_THAT(daemon.withdrawn, ElementsAre(104U));
}

TEST_F(DesktopFacilities, aClickTellsWhichNotificationAndItsToken) {
    NotificationDaemon daemon({"actions", "body"});
    NotificationService service({"Parvela", "app.parvela.Parvela"});
    std::vector<std::string> clicked;
    service.onActivated = [&](const std::string& identifier, const std::optional<std::string>& token) {
        clicked.push_back(identifier + " " + token.value_or("-"));
    };
    service.post({"a", "A", ""});
    service.post({"b", "B", ""});
    ASSERT_TRUE(waitFor([&] { return daemon.shown.size() == 2; }));
    settle(*session);
    daemon.emit("ActionInvoked", g_variant_new("(us)", 102U, "default"));
    daemon.emit("ActivationToken", g_variant_new("(us)", 101U, "token-1"));
    daemon.emit("ActionInvoked", g_variant_new("(us)", 101U, "default"));
    daemon.emit("ActionInvoked", g_variant_new("(us)", 101U, "other action"));
    daemon.emit("ActionInvoked", g_variant_new("(us)", 7U, "default"));
    daemon.emit("ActionInvoked", g_variant_new("(s)", "of another shape"));
    ASSERT_TRUE(waitFor([&] { return clicked.size() == 2; }));
    settle(*session);
    EXPECT_THAT(clicked, ElementsAre("b -", "a token-1"));
}

TEST_F(DesktopFacilities, withoutAServiceNotificationsAreDropped) {
    NotificationService service({"Parvela", "app.parvela.Parvela"});
    service.post({"a", "A", ""});
    settle(*session);
    NotificationDaemon daemon({"body"});
    service.post({"b", "B", ""});
    ASSERT_TRUE(waitFor([&] { return !daemon.shown.empty(); }));
    EXPECT_EQ(daemon.shown[0].title, "B");
}

TEST_F(DesktopFacilities, aRealNotificationServiceShowsReplacesAndActivates) {
    const testing::PrivateDisplay display;
    const auto dunst = bus->startNotifications(display.name());
    const auto displayed = [] {
        const auto answer =
            ask(notificationsInterface, "/org/freedesktop/Notifications", "org.freedesktop.DBus.Properties", "Get",
                g_variant_new("(ss)", "org.dunstproject.cmd0", "displayedLength"));
        return answer ? std::string(CharPtr(g_variant_print(answer.get(), FALSE)).get()) : std::string();
    };
    std::vector<std::string> clicked;
    NotificationService service({"Parvela", "app.parvela.Parvela"});
    service.onActivated = [&](const std::string& identifier, const auto&) { clicked.push_back(identifier); };
    service.post({"daily-summary", "1 task due today", "Tom & <Jerry>"});
    ASSERT_TRUE(waitFor([&] { return displayed() == "(<uint32 1>,)"; })) << displayed();
    service.post({"daily-summary", "2 tasks due today", "a\nb"});
    service.post({"download", "Saved", "report.pdf"});
    ASSERT_TRUE(waitFor([&] { return displayed() == "(<uint32 2>,)"; })) << displayed();
    service.withdraw("download");
    ASSERT_TRUE(waitFor([&] { return displayed() == "(<uint32 1>,)"; })) << displayed();
    EXPECT_TRUE(ask(notificationsInterface, "/org/freedesktop/Notifications", "org.dunstproject.cmd0",
                    "NotificationAction", g_variant_new("(u)", 0U)));
    ASSERT_TRUE(waitFor([&] { return !clicked.empty(); }));
    EXPECT_THAT(clicked, ElementsAre("daily-summary"));
}

// ---- Tray

/// A tray that knows of items, and may or may not show them.
class TrayWatcher {
public:
    explicit TrayWatcher(bool hosted) : hosted(hosted) {}

    bool hosted;
    std::vector<std::string> items;

    void emit(const char* signal) const { peer_.emit("org.kde.StatusNotifierWatcher", signal, nullptr); }

private:
    BusPeer peer_{"org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
                  R"xml(<node><interface name="org.kde.StatusNotifierWatcher">
        <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
        <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
      </interface></node>)xml",
                  [this](const std::string&, GVariant* values) -> GVariant* {
                      const char* name = nullptr;
                      g_variant_get(values, "(&s)", &name);
                      items.emplace_back(name);
                      return nullptr;
                  },
                  [this](const std::string&) { return g_variant_new_boolean(hosted); }};
};

std::map<std::string, std::string> itemProperties(const std::string& name) {
    std::map<std::string, std::string> result;
    const auto answer = ask(name, "/StatusNotifierItem", "org.freedesktop.DBus.Properties", "GetAll",
                            g_variant_new("(s)", "org.kde.StatusNotifierItem"));
    if (!answer) return result;
    const VariantPtr dictionary(g_variant_get_child_value(answer.get(), 0));
    for (gsize index = 0; index < g_variant_n_children(dictionary.get()); ++index) {
        const char* key = nullptr;
        VariantPtr value;
        g_variant_get_child(dictionary.get(), index, "{&sv}", &key, value.out());
        result[key] = CharPtr(g_variant_print(value.get(), FALSE)).get();
    }
    return result;
}

TrayItem::Identity identity() {
    return {.id = "parvela",
            .title = "Parvela",
            .iconName = "app.parvela.Parvela-symbolic",
            .iconFolder = "/icons",
            .icons = {{.size = 1, .pixels = {0xFF, 1, 2, 3}}}};
}

TEST_F(DesktopFacilities, aTrayItemRegistersWithEveryTrayThatComes) {
    TrayItem item(identity());
    settle(*session);
    EXPECT_FALSE(item.isShown().get()) << "there is no tray";
    {
        TrayWatcher watcher(true);
        ASSERT_TRUE(waitFor([&] { return item.isShown().get(); }));
        ASSERT_EQ(watcher.items.size(), 1U);
        EXPECT_THAT(watcher.items[0], HasSubstr("org.kde.StatusNotifierItem-"));
        watcher.hosted = false;
        watcher.emit("StatusNotifierHostUnregistered");
        ASSERT_TRUE(waitFor([&] { return !item.isShown().get(); }));
        watcher.hosted = true;
        watcher.emit("StatusNotifierHostRegistered");
        ASSERT_TRUE(waitFor([&] { return item.isShown().get(); }));
    }
    ASSERT_TRUE(waitFor([&] { return !item.isShown().get(); }));
    TrayWatcher other(false);
    ASSERT_TRUE(waitFor([&] { return other.items.size() == 1; }));
    settle(*session);
    EXPECT_FALSE(item.isShown().get()) << "a watcher without a host shows nothing";
}

TEST_F(DesktopFacilities, aTrayItemAnswersItsHost) {
    TrayWatcher watcher(true);
    TrayItem item(identity());
    ASSERT_TRUE(waitFor([&] { return item.isShown().get(); }));
    const std::string name = watcher.items.at(0);

    auto properties = itemProperties(name);
    EXPECT_EQ(properties["IconName"], "'app.parvela.Parvela-symbolic'");
    EXPECT_EQ(properties["IconPixmap"], "[(1, 1, [0xff, 0x01, 0x02, 0x03])]");
    EXPECT_EQ(properties["ItemIsMenu"], "false");
    EXPECT_EQ(properties["Menu"], "'/StatusNotifierItem/Menu'");
    EXPECT_EQ(properties.size(), 19U) << "every declared property has a value of its type";

    std::vector<std::string> changes;
    const dbus::Address sender{name, "/StatusNotifierItem", "org.kde.StatusNotifierItem"};
    std::vector<dbus::SignalSubscription> subscriptions;
    for (const char* signal : {"NewTitle", "NewToolTip", "XAyatanaNewLabel"}) {
        subscriptions.emplace_back(*session, sender, signal,
                                   [&changes, signal](GVariant*) { changes.emplace_back(signal); });
    }
    item.setLabel("TSK-42 4:07");
    item.setToolTip("Timer running on TSK-42: Write <brief>");
    item.setLabel("TSK-42 4:07");
    ASSERT_TRUE(waitFor([&] { return changes.size() == 3; }));
    properties = itemProperties(name);
    EXPECT_EQ(properties["XAyatanaLabel"], "'TSK-42 4:07'");
    EXPECT_EQ(properties["Title"], "'Parvela — TSK-42 4:07'");
    EXPECT_THAT(properties["ToolTip"], HasSubstr("Write <brief>"));
    settle(*session);
    EXPECT_EQ(changes.size(), 3U);

    std::vector<std::string> clicks;
    item.onActivate = [&](const TrayItem::Activation& activation) {
        clicks.push_back(std::to_string(activation.x) + " " + std::to_string(activation.y) + " " +
                         activation.token.value_or("-"));
    };
    const char* const interface = "org.kde.StatusNotifierItem";
    EXPECT_TRUE(ask(name, "/StatusNotifierItem", interface, "ProvideXdgActivationToken", g_variant_new("(s)", "t")));
    EXPECT_TRUE(ask(name, "/StatusNotifierItem", interface, "Activate", g_variant_new("(ii)", 12, -15)));
    EXPECT_TRUE(ask(name, "/StatusNotifierItem", interface, "Activate", g_variant_new("(ii)", 1, 2)));
    EXPECT_TRUE(ask(name, "/StatusNotifierItem", interface, "Scroll", g_variant_new("(is)", 120, "vertical")));
    EXPECT_FALSE(ask(name, "/StatusNotifierItem", interface, "Activate", g_variant_new("(s)", "wrong")));
    EXPECT_THAT(clicks, ElementsAre("12 -15 t", "1 2 -"));
}

TEST_F(DesktopFacilities, theTrayMenuRunsWhatIsChosenAndMayChangeMeanwhile) {
    TrayWatcher watcher(true);
    TrayItem item(identity());
    int quickAdds = 0;
    item.setMenu({{.label = "Quick_Add…",
                   .action =
                       [&] {
                           ++quickAdds;
                           item.setMenu({{.label = "Only One", .action = [&] { quickAdds += 10; }}});
                       }},
                  {.kind = TrayMenuEntry::Kind::separator, .label = {}, .action = {}}});
    ASSERT_TRUE(waitFor([&] { return item.isShown().get(); }));
    const std::string name = watcher.items.at(0);
    const auto layout = [&] {
        const char* const none[] = {nullptr};
        const auto answer = ask(name, "/StatusNotifierItem/Menu", "com.canonical.dbusmenu", "GetLayout",
                                g_variant_new("(ii^as)", 0, -1, none));
        return answer ? std::string(CharPtr(g_variant_print(answer.get(), FALSE)).get()) : std::string();
    };
    const auto click = [&](const std::string& text) {
        const std::string id = text.substr(text.rfind("(", text.find("'label'")) + 1);
        return ask(name, "/StatusNotifierItem/Menu", "com.canonical.dbusmenu", "Event",
                   g_variant_new("(isvu)", std::stoi(id), "clicked", g_variant_new_int32(0), 0U));
    };
    std::string first;
    ASSERT_TRUE(waitFor([&] { return (first = layout()).contains("Quick"); })) << "the menu appears by itself";
    EXPECT_THAT(first, HasSubstr("'label': <'Quick__Add…'>"));
    EXPECT_THAT(first, HasSubstr("separator"));
    EXPECT_TRUE(click(first));
    ASSERT_TRUE(waitFor([&] { return quickAdds == 1; }));
    ASSERT_TRUE(waitFor([&] { return layout().contains("Only One"); }));
    EXPECT_TRUE(click(layout()));
    EXPECT_TRUE(waitFor([&] { return quickAdds == 11; }));
}

// ---- Badge, sleep, files

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
    g_dbus_connection_signal_unsubscribe(session->get(), subscription);
}

TEST_F(DesktopFacilities, wakingUpIsToldOnceForEachSleep) {
    const BusPeer logind("org.freedesktop.login1", "/org/freedesktop/login1",
                         "<node><interface name='org.freedesktop.login1.Manager'/></node>",
                         [](const std::string&, GVariant*) -> GVariant* { return nullptr; });
    int wakes = 0;
    const dbus::Bus system = runUntilDone(dbus::connect(G_BUS_TYPE_SYSTEM));
    auto monitor = std::make_unique<SleepMonitor>([&] { ++wakes; });
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

// ---- Shortcuts by the portal

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
      </interface></node>)xml",
                  [this](const std::string& method, GVariant* values) { return call(method, values); }};
};

constexpr HotKey controlOptionSpace{.keyCode = 49, .modifiers = 6144};

TEST_F(DesktopFacilities, thePortalsShortcutIsBoundPressedAndTakenBack) {
    GlobalShortcutsPortal shortcuts;
    EXPECT_EQ(runUntilDone(shortcuts.bind(controlOptionSpace, "Quick Add")).error(),
              GlobalShortcutsPortal::Problem::unavailable);

    Portal portal;
    std::vector<std::string> events;
    shortcuts.onActivated = [&](const std::optional<std::string>& token) { events.push_back(token.value_or("-")); };
    shortcuts.onRevoked = [&] { events.emplace_back("revoked"); };
    EXPECT_EQ(runUntilDone(shortcuts.bind(controlOptionSpace, "Quick Add")), "Ctrl+Alt+Space");
    ASSERT_EQ(portal.calls.size(), 2U);
    EXPECT_THAT(portal.calls[1], HasSubstr("'preferred_trigger': <'CTRL+ALT+space'>"));
    EXPECT_THAT(portal.calls[1], HasSubstr("'description': <'Quick Add'>"));
    portal.activate(Portal::session, "another");
    portal.activate("/of/somebody/else", "quick-add");
    portal.activate(Portal::session, "quick-add");
    portal.close(Portal::session);
    ASSERT_TRUE(waitFor([&] { return events.size() == 2; }));
    EXPECT_THAT(events, ElementsAre("token", "revoked"));

    portal.answer = 1;
    EXPECT_EQ(runUntilDone(shortcuts.bind(controlOptionSpace, "Quick Add")).error(),
              GlobalShortcutsPortal::Problem::refused);
}

}  // namespace
}  // namespace parvela
