#include "TemporaryFolder.h"
#include "Variable.h"

#include <Platform/DeviceName.h>
#include <Platform/SystemClock.h>
#include <Platform/XdgPaths.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>

namespace parvela {
namespace {

namespace fs = std::filesystem;
using parvela::testing::Variable;

TEST(SystemClock, followsAChangedTimeZone) {
    const SystemClock clock;
    // The two zones are 26 hours apart: at no moment do they share a date.
    const Variable zone("TZ", "Etc/GMT+12");
    const CivilDate west = clock.today();
    zone.set("Etc/GMT-14");
    const CivilDate east = clock.today();
    EXPECT_GE(east.dayNumber() - west.dayNumber(), 1);
    EXPECT_LE(east.dayNumber() - west.dayNumber(), 2);

    zone.set("UTC");
    EXPECT_EQ(clock.today(),
              CivilDate::fromDayNumber(std::chrono::floor<std::chrono::days>(clock.now()).time_since_epoch().count()));
}

TEST(SystemClock, findsWallClockTimesOnDaysWithAClockChange) {
    const Variable zone("TZ", "Europe/Berlin");
    const SystemClock clock;
    using std::chrono::sys_days;
    using namespace std::chrono;
    struct Case {
        CivilDate day;
        std::int64_t minutes;
        Instant expected;
    };
    const Case cases[] = {
        {{2026, 6, 10}, 9 * 60, sys_days(2026y / 6 / 10) + 7h},
        {{2026, 3, 29}, 9 * 60, sys_days(2026y / 3 / 29) + 7h},            // an hour shorter
        {{2026, 10, 25}, 9 * 60, sys_days(2026y / 10 / 25) + 8h},          // an hour longer
        {{2026, 3, 29}, 2 * 60 + 30, sys_days(2026y / 3 / 29) + 1h},       // 02:30 is skipped
        {{2026, 10, 25}, 2 * 60 + 30, sys_days(2026y / 10 / 25) + 30min},  // 02:30 comes twice
    };
    for (const auto& [day, minutes, expected] : cases) EXPECT_EQ(clock.moment(day, minutes), expected) << day.text();
}

TEST(DeviceName, prefersThePrettyNameOverTheHostName) {
    const testing::TemporaryFolder folder;
    const fs::path file = folder.path() / "machine-info";
    struct Case {
        const char* machineInfo;
        const char* host;
        std::string name;
    };
    const Case cases[] = {
        {"ICON_NAME=computer\nPRETTY_HOSTNAME=\"Robin's \\\"big\\\" PC\"\n", "pc", "Robin's \"big\" PC"},
        {"PRETTY_HOSTNAME=Büro", "pc", "Büro"},
        {"PRETTY_HOSTNAME=\n", "pc", "pc"},
        {"PRETTY_HOSTNAME=\"unbalanced\n", "pc", "pc"},
        {"PRETTY_HOSTNAME=\"two\tparts\"", "pc", "two parts"},
        {"#PRETTY_HOSTNAME=x\n", "localhost", "Mac"},
        {"", "", "Mac"},
        {"PRETTY_HOSTNAME=\"\xFF\"", "pc", "\u{FFFD}"},
    };
    for (const Case& c : cases) {
        std::ofstream(file) << c.machineInfo;
        EXPECT_EQ(deviceName(file, c.host), c.name) << c.machineInfo;
    }
    std::ofstream(file) << "PRETTY_HOSTNAME=" << std::string(5000, 'x');
    EXPECT_EQ(deviceName(file, "pc"), std::string(64, 'x'));
    EXPECT_EQ(deviceName(folder.path(), "pc"), "pc") << "a folder in the file's place";
    EXPECT_EQ(deviceName(folder.path() / "absent", "pc"), "pc");
}

TEST(XdgPaths, followsTheEnvironmentAndIgnoresRelativeSettings) {
    const Variable home("HOME", "/home/robin");
    const Variable config("XDG_CONFIG_HOME", "/elsewhere/config");
    const Variable data("XDG_DATA_HOME", "relative");
    const Variable state("XDG_STATE_HOME", nullptr);
    const Variable cache("XDG_CACHE_HOME", "");
    const XdgPaths paths = XdgPaths::current();
    EXPECT_EQ(paths.config, "/elsewhere/config/parvela");
    EXPECT_EQ(paths.data, "/home/robin/.local/share/parvela");
    EXPECT_EQ(paths.state, "/home/robin/.local/state/parvela");
    EXPECT_EQ(paths.cache, "/home/robin/.cache/parvela");
    EXPECT_TRUE(paths.downloads.is_absolute());
}

TEST(XdgPaths, newFoldersArePrivateAndOldOnesKeepTheirMode) {
    const testing::TemporaryFolder folder;
    chmod(folder.path().c_str(), 0755);
    EXPECT_FALSE(ensurePrivateFolder(folder.path() / "a" / "b"));
    EXPECT_FALSE(ensurePrivateFolder(folder.path() / "a" / "b"));
    EXPECT_EQ(fs::status(folder.path() / "a").permissions(), fs::perms::owner_all);
    EXPECT_EQ(fs::status(folder.path() / "a" / "b").permissions(), fs::perms::owner_all);
    EXPECT_NE(fs::status(folder.path()).permissions(), fs::perms::owner_all);
    std::ofstream(folder.path() / "file") << "x";
    EXPECT_EQ(ensurePrivateFolder(folder.path() / "file" / "c"), std::errc::file_exists);
}

}  // namespace
}  // namespace parvela
