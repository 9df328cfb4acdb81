#include "Variable.h"
#include "support/TemporaryFolder.h"

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

TEST(SystemClock, takesDatesAndTimesFromTheSameZone) {
    const SystemClock clock;
    const Variable zone("TZ", nullptr);
    for (const char* name : {"UTC", "UTC+5", "<-24>24", "<+24>-24", "<+0330>-3:30", "Asia/Kolkata", "no such zone"}) {
        zone.set(name);
        const Instant midnight = clock.moment(clock.today(), 0);
        EXPECT_LE(midnight, clock.now()) << name;
        EXPECT_GT(clock.moment(clock.today().addingDays(1), 0), clock.now()) << name;
    }
}

TEST(SystemClock, findsWallClockTimesOnDaysWithAClockChange) {
    const SystemClock clock;
    const Variable zone("TZ", nullptr);
    using std::chrono::sys_days;
    using namespace std::chrono;
    struct Case {
        const char* zone;
        CivilDate day;
        std::int64_t minutes;
        Instant expected;
    };
    constexpr const char* berlin = "Europe/Berlin";
    const Case cases[] = {
        {berlin, {2026, 6, 10}, 9 * 60, sys_days(2026y / 6 / 10) + 7h},
        {berlin, {2026, 3, 29}, 9 * 60, sys_days(2026y / 3 / 29) + 7h},            // an hour shorter
        {berlin, {2026, 10, 25}, 9 * 60, sys_days(2026y / 10 / 25) + 8h},          // an hour longer
        {berlin, {2026, 3, 29}, 2 * 60, sys_days(2026y / 3 / 29) + 1h},            // 02:00 is skipped
        {berlin, {2026, 3, 29}, 2 * 60 + 30, sys_days(2026y / 3 / 29) + 1h},       // 02:30 is skipped
        {berlin, {2026, 10, 25}, 2 * 60, sys_days(2026y / 10 / 25)},               // 02:00 comes twice
        {berlin, {2026, 10, 25}, 2 * 60 + 30, sys_days(2026y / 10 / 25) + 30min},  // 02:30 comes twice
        {berlin, {2026, 10, 25}, 3 * 60, sys_days(2026y / 10 / 25) + 2h},          // 03:00 comes once
        {"CET-1CEST,M3.5.0,M10.5.0/3", {2026, 3, 29}, 2 * 60 + 30, sys_days(2026y / 3 / 29) + 1h},
        {"Pacific/Apia", {2011, 12, 30}, 12 * 60, sys_days(2011y / 12 / 30) + 10h},  // the whole day is skipped
        {"Australia/Lord_Howe", {2026, 4, 5}, 60 + 45, sys_days(2026y / 4 / 4) + 14h + 45min},  // half an hour longer
    };
    for (const auto& [name, day, minutes, expected] : cases) {
        zone.set(name);
        EXPECT_EQ(clock.moment(day, minutes), expected) << name << ' ' << day.text() << ' ' << minutes;
    }
}

TEST(DeviceName, prefersThePrettyNameOverTheHostName) {
    const test::TemporaryFolder folder;
    const fs::path file = folder.path() / "machine-info";
    const struct {
        const char* machineInfo;
        const char* host;
        std::string name;
    } cases[] = {
        {"ICON_NAME=computer\nPRETTY_HOSTNAME=\"Robin's \\\"big\\\" PC\"\n", "pc", "Robin's \"big\" PC"},
        {"PRETTY_HOSTNAME=Büro", "pc", "Büro"},
        {"PRETTY_HOSTNAME=\n", "pc", "pc"},
        {"PRETTY_HOSTNAME=\"unbalanced\n", "pc", "pc"},
        {"PRETTY_HOSTNAME=\"two\tparts\"", "pc", "two parts"},
        {"#PRETTY_HOSTNAME=x\n", "localhost", "Mac"},
        {"", "", "Mac"},
        {"PRETTY_HOSTNAME=\"\xFF\"", "pc", "\u{FFFD}"},
    };
    for (const auto& c : cases) {
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
    const test::TemporaryFolder folder;
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
