#include "BusPeer.h"
#include "PrivateDisplay.h"

#include <Platform/KeyCode.h>
#include <Platform/MainLoop.h>
#include <Platform/X11HotKeys.h>

#include <chrono>
#include <cstdlib>
#include <functional>

namespace parvela {
namespace {

using testing::waitFor;

TEST(KeyCode, placesOfKeysTranslateBothWays) {
    EXPECT_EQ(hardwareKeycode(49), 65U) << "the space bar";
    EXPECT_EQ(hardwareKeycode(36), 36U) << "Return";
    EXPECT_EQ(hardwareKeycode(53), 9U) << "Escape";
    EXPECT_EQ(hardwareKeycode(0), 38U) << "A";
    EXPECT_EQ(keyCodeOf(38), 0U);
    EXPECT_EQ(hardwareKeycode(200), std::nullopt);
    EXPECT_EQ(keyCodeOf(37), std::nullopt) << "Control alone is no key of a shortcut";
    int keys = 0;
    for (std::uint32_t keyCode = 0; keyCode < 256; ++keyCode) {
        const auto keycode = hardwareKeycode(keyCode);
        if (!keycode) continue;
        ++keys;
        EXPECT_EQ(keyCodeOf(*keycode), keyCode);
    }
    EXPECT_EQ(keys, 100);
}

class X11HotKeysTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { display = new testing::PrivateDisplay; }
    static void TearDownTestSuite() { delete display; }

    /// Presses real keys.
    static void type(const std::string& arguments) { ASSERT_EQ(std::system(("xdotool " + arguments).c_str()), 0); }

    inline static testing::PrivateDisplay* display = nullptr;
    int presses = 0;
    std::function<void()> count = [this] { ++presses; };
};

constexpr HotKey controlOptionSpace{.keyCode = 49, .modifiers = 6144};

TEST_F(X11HotKeysTest, aPressRunsTheActionOnceHoweverLongItIsHeld) {
    const auto keys = X11HotKeys::open();
    ASSERT_TRUE(keys);
    ASSERT_EQ(keys->add(controlOptionSpace, count), 1U);
    type("key space key ctrl+space key ctrl+alt+shift+space");
    // Holds it beyond the delay of the keyboard's own repeating.
    type("keydown ctrl+alt+space sleep 1 keyup ctrl+alt+space");
    ASSERT_TRUE(waitFor([this] { return presses >= 1; }));
    type("key ctrl+alt+space");
    ASSERT_TRUE(waitFor([this] { return presses >= 2; }));
    keys->remove(1);
    keys->remove(77);
    type("key ctrl+alt+space");
    runUntilDone(sleepFor(std::chrono::milliseconds(50)));
    EXPECT_EQ(presses, 2);
}

TEST_F(X11HotKeysTest, locksDoNotMatter) {
    const auto keys = X11HotKeys::open();
    ASSERT_TRUE(keys->add(controlOptionSpace, count));
    for (const char* lock : {"Caps_Lock", "Num_Lock"}) {
        SCOPED_TRACE(lock);
        presses = 0;
        type(std::string("key ") + lock);
        type("key ctrl+alt+space");
        EXPECT_TRUE(waitFor([this] { return presses == 1; }));
        type(std::string("key ") + lock);
    }
}

TEST_F(X11HotKeysTest, aShortcutOfAnotherProgramIsRefusedUntilItIsFree) {
    const auto keys = X11HotKeys::open();
    auto other = X11HotKeys::open();
    ASSERT_TRUE(keys && other);
    ASSERT_TRUE(other->add(controlOptionSpace, [] {}));
    EXPECT_EQ(keys->add(controlOptionSpace, count), std::nullopt);
    EXPECT_EQ(keys->add({.keyCode = 200, .modifiers = 6144}, count), std::nullopt) << "there is no such key";
    other.reset();
    EXPECT_EQ(keys->add(controlOptionSpace, count), 3U) << "ids of refused shortcuts are not given again";
    type("key ctrl+alt+space");
    EXPECT_TRUE(waitFor([this] { return presses == 1; }));
}

TEST_F(X11HotKeysTest, anActionMayRemoveItsShortcut) {
    const auto keys = X11HotKeys::open();
    const auto id = keys->add({.keyCode = 0, .modifiers = KeyModifiers::command | KeyModifiers::shift}, [&] {
        ++presses;
        keys->remove(1);
    });
    ASSERT_EQ(id, 1U);
    type("key super+shift+a");
    ASSERT_TRUE(waitFor([this] { return presses == 1; }));
    auto other = X11HotKeys::open();
    EXPECT_TRUE(other->add({.keyCode = 0, .modifiers = KeyModifiers::command | KeyModifiers::shift}, count));
}

TEST_F(X11HotKeysTest, keysHaveTheirLayoutsSymbols) {
    const auto keys = X11HotKeys::open();
    EXPECT_EQ(keys->keysym(0), 'a');
    EXPECT_EQ(keys->keysym(49), ' ');
    EXPECT_EQ(keys->keysym(200), std::nullopt);
}

}  // namespace
}  // namespace parvela
