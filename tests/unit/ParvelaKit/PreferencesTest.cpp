#include "support/MemoryStore.h"

#include <ParvelaKit/Preferences.h>

namespace parvela {
namespace {

class PreferencesTest : public testing::Test {
protected:
    std::shared_ptr<test::MemoryStore> store = std::make_shared<test::MemoryStore>();
    Preferences preferences{store};
};

TEST_F(PreferencesTest, missingKeysReadAsTheirDefaults) {
    EXPECT_TRUE(preferences.hotKeyEnabled());
    EXPECT_EQ(preferences.hotKeyCode(), 49U);
    EXPECT_EQ(preferences.hotKeyModifiers(), 6144U);
    EXPECT_FALSE(preferences.dailySummaryEnabled());
    EXPECT_EQ(preferences.dailySummaryMinutes(), 540);
    EXPECT_TRUE(preferences.notificationsEnabled());
    EXPECT_EQ(preferences.pageZoom(), 1);
    EXPECT_EQ(preferences.lastURL(), std::nullopt);
    EXPECT_EQ(preferences.linkInfo("https://h"), std::nullopt);
}

TEST_F(PreferencesTest, storedZeroAndFalseAreNotTheDefault) {
    store->set("hotKeyModifiers", std::int64_t{0});
    store->set("dailySummaryMinutes", std::int64_t{0});
    store->set("hotKeyEnabled", false);
    EXPECT_EQ(preferences.hotKeyModifiers(), 0U);
    EXPECT_EQ(preferences.dailySummaryMinutes(), 0);
    EXPECT_FALSE(preferences.hotKeyEnabled());
}

TEST_F(PreferencesTest, valuesOfTheWrongTypeOrOutOfRangeReadAsTheDefault) {
    store->set("hotKeyCode", std::string("49"));
    store->set("hotKeyModifiers", std::int64_t{1} << 40);
    store->set("hotKeyEnabled", std::string("no"));
    store->set("dailySummaryMinutes", 12.5);
    store->set("lastURL", std::int64_t{7});
    store->set("macWindowState", std::string("{}"));
    store->set("pageZoom", 1e9);
    EXPECT_EQ(preferences.hotKeyCode(), 49U);
    EXPECT_EQ(preferences.hotKeyModifiers(), 6144U);
    EXPECT_TRUE(preferences.hotKeyEnabled());
    EXPECT_EQ(preferences.dailySummaryMinutes(), 540);
    EXPECT_EQ(preferences.lastURL(), std::nullopt);
    EXPECT_EQ(preferences.windowState(), std::nullopt);
    EXPECT_EQ(preferences.pageZoom(), 1);
    store->set("hotKeyEnabled", std::int64_t{0});
    store->set("dailySummaryMinutes", 600.0);
    EXPECT_FALSE(preferences.hotKeyEnabled());
    EXPECT_EQ(preferences.dailySummaryMinutes(), 600);
    store->set("hotKeyCode", std::int64_t{-1});
    EXPECT_EQ(preferences.hotKeyCode(), 49U);
}

/// Every text preference reads what was written under its own key, and none removes it.
TEST_F(PreferencesTest, textsAreKeptUnderTheirKeys) {
    using Text = std::optional<std::string>;
    const struct {
        const char* key;
        Text (Preferences::*get)() const;
        void (Preferences::*set)(Text) const;
    } cases[] = {
        {"customAppURL", &Preferences::customAppURL, &Preferences::setCustomAppURL},
        {"customAPIURL", &Preferences::customApiURL, &Preferences::setCustomApiURL},
        {"ParvelaAppURL", &Preferences::appURLOverride, &Preferences::setAppURLOverride},
        {"ParvelaAPIURL", &Preferences::apiURLOverride, &Preferences::setApiURLOverride},
        {"defaultBoardID", &Preferences::defaultBoardID, &Preferences::setDefaultBoardID},
        {"defaultBoardName", &Preferences::defaultBoardName, &Preferences::setDefaultBoardName},
        {"dailySummaryLastSent", &Preferences::dailySummaryLastSent, &Preferences::setDailySummaryLastSent},
        {"dailySummaryDaysSent", &Preferences::dailySummaryDaysSent, &Preferences::setDailySummaryDaysSent},
        {"pushToken", &Preferences::pushToken, &Preferences::setPushToken},
        {"lastURL", &Preferences::lastURL, &Preferences::setLastURL},
        {"macLastWindowFrame", &Preferences::lastWindowFrame, &Preferences::setLastWindowFrame},
    };
    for (const auto& [key, get, set] : cases) {
        (preferences.*set)(key);
        EXPECT_EQ((preferences.*get)(), key);
        EXPECT_EQ(store->get(key), StoredValue(std::string(key)));
        (preferences.*set)(std::nullopt);
        EXPECT_EQ(store->get(key), std::nullopt) << key;
    }
    EXPECT_TRUE(store->values.empty());
}

TEST_F(PreferencesTest, linksAreKeptPerWebApp) {
    const LinkInfo info{Url::parse("https://api.test/base").value(), "w1", std::nullopt, "Robin \"R\" Ü",
                        Instant(std::chrono::milliseconds(1'750'000'000'123))};
    preferences.setLinkInfo("https://a", info);
    EXPECT_EQ(preferences.linkInfo("https://a"), info);
    EXPECT_EQ(preferences.linkInfo("https://b"), std::nullopt);
    EXPECT_EQ(store->get("linkInfo|https://a"),
              StoredValue(Data{R"({"apiBase":"https://api.test/base","linkedAt":1750000000123,)"
                               R"("userName":"Robin \"R\" Ü","workspaceId":"w1"})"}));

    for (const char* damaged :
         {"", "[]", "{", R"({"apiBase":"https://h"})", R"({"apiBase":"a b","linkedAt":1})",
          R"({"apiBase":"https://h","linkedAt":"1"})", R"({"apiBase":"https://h","linkedAt":1e300})"}) {
        store->set("linkInfo|https://a", Data{damaged});
        EXPECT_EQ(preferences.linkInfo("https://a"), std::nullopt) << damaged;
    }
}

}  // namespace
}  // namespace parvela
