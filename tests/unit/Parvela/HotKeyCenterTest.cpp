#include "HotKeys/QuickAddHotKey.h"
#include "support/MemoryStore.h"

#include <Platform/MainLoop.h>

#include <set>
#include <utility>

namespace parvela {
namespace {

/// A desktop on which some shortcuts are taken, and which may think before it answers.
class FakeFacility final : public HotKeyFacility {
public:
    HotKeyAvailability availability() const override { return kind; }
    Task<bool> take(std::uint32_t id, HotKey key) override {
        if (thinks) {
            auto answer = answers.emplace_back();
            co_await answer;
        }
        if (takenByOthers.contains(key.keyCode)) co_return false;
        held[id] = key;
        co_return true;
    }
    void release(std::uint32_t id) override { held.erase(id); }
    std::optional<std::uint32_t> keysym(std::uint32_t keyCode) const override {
        static const std::map<std::uint32_t, std::uint32_t> layout{{0x28, GDK_KEY_k},     {0x21, GDK_KEY_udiaeresis},
                                                                   {0x31, GDK_KEY_space}, {0x30, GDK_KEY_Tab},
                                                                   {0x60, GDK_KEY_F5},    {0x18, GDK_KEY_dead_acute}};
        const auto found = layout.find(keyCode);
        return found == layout.end() ? std::nullopt : std::optional(found->second);
    }

    HotKeyAvailability kind = HotKeyAvailability::keys;
    bool thinks = false;
    std::vector<Deferred<bool>> answers;
    std::set<std::uint32_t> takenByOthers;
    std::map<std::uint32_t, HotKey> held;
};

constexpr HotKey controlOptionSpace{.keyCode = 49, .modifiers = 6144};
constexpr HotKey commandShiftK{.keyCode = 0x28, .modifiers = KeyModifiers::command | KeyModifiers::shift};

class HotKeyCenterTest : public ::testing::Test {
protected:
    HotKeyCenterTest() {
        auto owned = std::make_unique<FakeFacility>();
        facility = owned.get();
        center = std::make_shared<HotKeyCenter>(std::move(owned));
    }

    std::optional<std::uint32_t> add(HotKey key, const std::string& name) {
        return runUntilDone(center->registerKey(key, [this, name](const std::optional<std::string>& token) {
            pressed.push_back(name + token.value_or(""));
        }));
    }
    /// Presses a registered shortcut and lets the main loop turn.
    void press(std::uint32_t id, const std::optional<std::string>& token = std::nullopt) {
        facility->onPressed(id, token);
        while (g_main_context_iteration(nullptr, FALSE)) {
        }
    }

    FakeFacility* facility;
    std::shared_ptr<HotKeyCenter> center;
    std::vector<std::string> pressed;
};

TEST_F(HotKeyCenterTest, idsAreNeverGivenTwice) {
    facility->takenByOthers = {49};
    EXPECT_EQ(add(controlOptionSpace, "taken"), std::nullopt);
    const auto id = add(commandShiftK, "k");
    EXPECT_EQ(id, 2U) << "the refused one had the first";
    center->unregister(77);
    center->unregister(2);
    EXPECT_TRUE(facility->held.empty());
    facility->takenByOthers.clear();
    EXPECT_EQ(add(controlOptionSpace, "space"), 3U);
}

TEST_F(HotKeyCenterTest, aPressRunsTheActionLaterAndOnlyWhileRegistered) {
    const auto space = *add(controlOptionSpace, "space");
    const auto k = *add(commandShiftK, "k");
    facility->onPressed(space, std::nullopt);
    EXPECT_TRUE(pressed.empty()) << "not inside the desktop's own call";
    press(k, " with token");
    EXPECT_THAT(pressed, ::testing::ElementsAre("space", "k with token"));

    facility->onPressed(space, std::nullopt);
    center->unregister(space);
    press(space);
    press(99);
    EXPECT_EQ(pressed.size(), 2U);
}

TEST_F(HotKeyCenterTest, whoRecordsShortcutsGetsThePressesInTheirPlace) {
    const auto id = *add(controlOptionSpace, "space");
    {
        std::vector<HotKey> recorded;
        const Subscription diversion = center->divert([&](HotKey key) { recorded.push_back(key); });
        press(id);
        EXPECT_THAT(recorded, ::testing::ElementsAre(controlOptionSpace));
        EXPECT_TRUE(pressed.empty());
    }
    press(id);
    EXPECT_EQ(pressed.size(), 1U);
}

TEST_F(HotKeyCenterTest, shortcutsAreShownByTheLayout) {
    const struct {
        HotKey key;
        const char* shown;
        const char* accelerator;
    } cases[] = {
        {controlOptionSpace, "⌃⌥Space", "<Control><Alt>space"},
        {commandShiftK, "⇧⌘k", "<Shift><Super>k"},
        {{.keyCode = 0x21, .modifiers = 0x1B00}, "⌃⌥⇧⌘ü", "<Shift><Control><Alt><Super>udiaeresis"},
        {{.keyCode = 36, .modifiers = KeyModifiers::command}, "⌘↩", ""},
        {{.keyCode = 0x30, .modifiers = KeyModifiers::control}, "⌃Key 48", "<Control>Tab"},
        {{.keyCode = 0x60, .modifiers = 0}, "Key 96", "F5"},
        {{.keyCode = 0x18, .modifiers = KeyModifiers::option}, "⌥Key 24", "<Alt>dead_acute"},
        {{.keyCode = 4000000000, .modifiers = 0xFFFFFFFF}, "⌃⌥⇧⌘Key 4000000000", ""},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(center->displayString(one.key), one.shown);
        EXPECT_EQ(center->accelerator(one.key), one.accelerator) << one.shown;
    }
}

class QuickAddHotKeyTest : public HotKeyCenterTest {
protected:
    bool apply() { return runUntilDone(hotKey->apply()); }

    std::shared_ptr<test::MemoryStore> store = std::make_shared<test::MemoryStore>();
    Preferences preferences{store};
    std::shared_ptr<QuickAddHotKey> hotKey = std::make_shared<QuickAddHotKey>(
        center, preferences, [this](const std::optional<std::string>&) { pressed.emplace_back("quick add"); });
};

TEST_F(QuickAddHotKeyTest, followsThePreferences) {
    EXPECT_TRUE(apply());
    EXPECT_EQ(facility->held.at(1), controlOptionSpace);
    EXPECT_EQ(hotKey->accelerator.get(), "<Control><Alt>space");
    press(1);
    EXPECT_EQ(pressed.size(), 1U);

    preferences.setHotKeyCode(0x28);
    EXPECT_TRUE(apply());
    ASSERT_EQ(facility->held.size(), 1U) << "the old one is given up";
    EXPECT_EQ(facility->held.begin()->second.keyCode, 0x28U);

    facility->takenByOthers = {49};
    preferences.setHotKeyCode(49);
    EXPECT_FALSE(apply());
    EXPECT_EQ(hotKey->state.get(), QuickAddHotKey::State::refused);
    EXPECT_EQ(hotKey->accelerator.get(), "");

    preferences.setHotKeyEnabled(false);
    EXPECT_TRUE(apply());
    EXPECT_EQ(hotKey->state.get(), QuickAddHotKey::State::off);
    EXPECT_TRUE(facility->held.empty());
}

TEST_F(QuickAddHotKeyTest, anAnswerThatComesTooLateIsGivenBack) {
    facility->kind = HotKeyAvailability::portal;
    facility->thinks = true;
    auto first = hotKey->apply();
    EXPECT_EQ(hotKey->state.get(), QuickAddHotKey::State::waiting);
    preferences.setHotKeyEnabled(false);
    EXPECT_TRUE(apply());
    facility->answers.front().resolve(true);
    ASSERT_TRUE(first.done());
    EXPECT_FALSE(std::move(first).result());
    EXPECT_TRUE(facility->held.empty());
    EXPECT_EQ(hotKey->state.get(), QuickAddHotKey::State::off);
}

}  // namespace
}  // namespace parvela
