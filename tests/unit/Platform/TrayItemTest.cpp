#include "DesktopFacilities.h"

#include <Platform/DesktopMenu.h>
#include <Platform/TrayItem.h>

#include <map>
#include <memory>

namespace parvela {
namespace {

using testing::ask;
using testing::BusPeer;
using testing::DesktopFacilities;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using testing::settle;
using testing::waitFor;

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
    item.setLabel("TSK-42 & 4:07");
    item.setToolTip("Timer running on TSK-42: <b>Tea</b> & cake");
    item.setLabel("TSK-42 & 4:07");
    ASSERT_TRUE(waitFor([&] { return changes.size() == 3; }));
    properties = itemProperties(name);
    EXPECT_EQ(properties["XAyatanaLabel"], "'TSK-42 & 4:07'");
    EXPECT_EQ(properties["Title"], "'Parvela — TSK-42 & 4:07'");
    EXPECT_THAT(properties["ToolTip"], HasSubstr("TSK-42: &lt;b&gt;Tea&lt;/b&gt; &amp; cake"))
        << "its readers take it for markup";
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

TEST_F(DesktopFacilities, aMenuHasSubmenusIconsAndLinesThatCannotBeChosen) {
    constexpr const char* path = "/app/parvela/test/Menu";
    DesktopMenu menu(path);
    int asked = 0;
    int opened = 0;
    menu.onAboutToShow = [&] { ++asked; };
    menu.set({{.label = "Nothing due today"},
              {.label = "Boards",
               .children = {{.label = "Launch", .action = [&] { ++opened; }, .description = "d", .icon = "png"}}}});
    const char* const none[] = {nullptr};
    std::string layout;
    ASSERT_TRUE(waitFor([&] {
        const auto answer = ask(g_dbus_connection_get_unique_name(session->get()), path, "com.canonical.dbusmenu",
                                "GetLayout", g_variant_new("(ii^as)", 0, -1, none));
        layout = answer ? CharPtr(g_variant_print(answer.get(), FALSE)).get() : "";
        return layout.contains("Launch");
    }));
    EXPECT_THAT(layout, HasSubstr("'enabled': <false>"));
    EXPECT_THAT(layout, HasSubstr("'children-display': <'submenu'>"));
    EXPECT_THAT(layout, HasSubstr("'icon-data': <"));
    EXPECT_THAT(layout, HasSubstr("'accessible-desc': <'d'>"));
    EXPECT_TRUE(ask(g_dbus_connection_get_unique_name(session->get()), path, "com.canonical.dbusmenu", "AboutToShow",
                    g_variant_new("(i)", 0)));
    EXPECT_TRUE(waitFor([&] { return asked == 1; }));
    EXPECT_EQ(opened, 0);
}

}  // namespace
}  // namespace parvela
