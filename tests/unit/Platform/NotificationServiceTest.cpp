#include "DesktopFacilities.h"
#include "PrivateDisplay.h"

#include <Platform/NotificationService.h>

#include <memory>

namespace parvela {
namespace {

using testing::ask;
using testing::BusPeer;
using testing::DesktopFacilities;
using ::testing::ElementsAre;
using testing::settle;
using testing::waitFor;

constexpr const char* notificationsInterface = "org.freedesktop.Notifications";

/// A notification service that keeps what it is told.
class NotificationDaemon {
public:
    explicit NotificationDaemon(std::vector<std::string> capabilities, std::string name = "plain")
        : capabilities_(std::move(capabilities)), name_(std::move(name)) {}

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
        if (method == "GetServerInformation") return g_variant_new("(ssss)", name_.c_str(), "", "", "");
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
    std::string name_;
    BusPeer peer_{notificationsInterface, "/org/freedesktop/Notifications",
                  R"xml(<node><interface name="org.freedesktop.Notifications">
        <method name="GetCapabilities"><arg type="as" direction="out"/></method>
        <method name="CloseNotification"><arg type="u" direction="in"/></method>
        <method name="GetServerInformation"><arg type="s" direction="out"/><arg type="s" direction="out"/>
          <arg type="s" direction="out"/><arg type="s" direction="out"/></method>
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
    std::vector<std::string> dropped;
    service.onDropped = [&](const DesktopNotification& notification) { dropped.push_back(notification.identifier); };
    service.post({"a", "A", ""});
    ASSERT_TRUE(waitFor([&] { return dropped.size() == 1; }));
    NotificationDaemon daemon({"body"});
    service.post({"b", "B", ""});
    ASSERT_TRUE(waitFor([&] { return !daemon.shown.empty(); }));
    EXPECT_EQ(daemon.shown[0].title, "B");
}

TEST_F(DesktopFacilities, notificationsThatEndAreToldAndThoseLeftGoWithTheProgram) {
    auto daemon = std::make_unique<NotificationDaemon>(std::vector<std::string>{"actions", "body"});
    auto service =
        std::make_unique<NotificationService>(NotificationService::Program{"Parvela", "app.parvela.Parvela"});
    std::vector<std::string> closed;
    service->onClosed = [&](const std::string& identifier) { closed.push_back(identifier); };
    for (const char* identifier : {"a", "b"}) service->post({identifier, "A", ""});
    service->post({"c", "A", "", DesktopNotification::Click::nothing});
    ASSERT_TRUE(waitFor([&] { return daemon->shown.size() == 3; }));
    EXPECT_EQ(daemon->shown[2].actions, 0U) << "a click would do nothing";
    settle(*session);
    daemon->emit("NotificationClosed", g_variant_new("(uu)", 101U, 1U));
    ASSERT_TRUE(waitFor([&] { return closed.size() == 1; }));
    service.reset();
    ASSERT_TRUE(waitFor([&] { return daemon->withdrawn.size() == 2; }));
    EXPECT_THAT(daemon->withdrawn, ElementsAre(102U, 103U));
    EXPECT_THAT(closed, ElementsAre("a"));

    service = std::make_unique<NotificationService>(NotificationService::Program{"Parvela", "app.parvela.Parvela"});
    service->onClosed = [&](const std::string& identifier) { closed.push_back(identifier); };
    service->post({"d", "A", ""});
    ASSERT_TRUE(waitFor([&] { return daemon->shown.size() == 4; }));
    settle(*session);
    daemon.reset();
    ASSERT_TRUE(waitFor([&] { return closed.size() == 2; })) << "a service takes with it what it showed";
}

TEST_F(DesktopFacilities, itIsKnownWhetherNotificationsReachTheUser) {
    NotificationService service({"Parvela", "app.parvela.Parvela"});
    const auto becomes = [&](NotificationAccess expected) {
        return waitFor([&] { return service.access().get() == expected; });
    };
    EXPECT_TRUE(becomes(NotificationAccess::missing));
    {
        const NotificationDaemon plain({"body"});
        EXPECT_TRUE(becomes(NotificationAccess::available));
    }
    EXPECT_TRUE(becomes(NotificationAccess::missing));

    GSettingsSchemaSource* const schemas = g_settings_schema_source_get_default();
    constexpr const char* schema = "org.gnome.desktop.notifications.application";
    const GLibPtr<GSettingsSchema, g_settings_schema_unref> known(
        schemas ? g_settings_schema_source_lookup(schemas, schema, TRUE) : nullptr);
    if (!known) GTEST_SKIP() << "GNOME's schema of notification settings is not installed";
    const auto settings = Ref<GSettings>::adopt(
        g_settings_new_with_path(schema, "/org/gnome/desktop/notifications/application/app-parvela-parvela/"));
    g_settings_set_boolean(settings.get(), "enable", FALSE);
    {
        const NotificationDaemon gnome({"body"}, "gnome-shell");
        EXPECT_TRUE(becomes(NotificationAccess::switchedOff));
        g_settings_set_boolean(settings.get(), "enable", TRUE);
        EXPECT_TRUE(becomes(NotificationAccess::available));
    }
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

}  // namespace
}  // namespace parvela
