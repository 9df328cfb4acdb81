#include "support/TemporaryFolder.h"

#include <ParvelaKit/GLibPtr.h>
#include <Platform/Autostart.h>

#include <filesystem>
#include <fstream>

#include <gio/gdesktopappinfo.h>

namespace parvela {
namespace {

namespace fs = std::filesystem;

class AutostartTest : public ::testing::Test {
protected:
    Autostart autostart(std::vector<std::string> command = {"/usr/bin/parvela-desktop", "--background"}) {
        return {folder.path() / "autostart", "app.parvela.Parvela", "Parvela", std::move(command)};
    }
    void write(const std::string& content) const {
        fs::create_directories(file.parent_path());
        std::ofstream(file) << content;
    }

    test::TemporaryFolder folder;
    fs::path file = folder.path() / "autostart" / "app.parvela.Parvela.desktop";
};

TEST_F(AutostartTest, isSwitchedByTheFile) {
    auto entry = autostart();
    EXPECT_FALSE(entry.isEnabled());
    EXPECT_FALSE(entry.setEnabled(true));
    EXPECT_TRUE(entry.isEnabled());
    EXPECT_FALSE(entry.setEnabled(true));
    EXPECT_FALSE(entry.setEnabled(false));
    EXPECT_FALSE(fs::exists(file));
    EXPECT_FALSE(entry.setEnabled(false)) << "what is off can be switched off";
}

TEST_F(AutostartTest, anEntrySwitchedOffElsewhereIsOff) {
    const struct {
        const char* content;
        bool enabled;
    } cases[] = {
        {"[Desktop Entry]\nType=Application\nExec=parvela-desktop\n", true},
        {"[Desktop Entry]\nExec=parvela-desktop\nHidden=true\n", false},
        {"[Desktop Entry]\nExec=parvela-desktop\nX-GNOME-Autostart-enabled=false\n", false},
        {"[Desktop Entry]\nExec=parvela-desktop\nX-GNOME-Autostart-enabled=true\n", true},
        {"[Desktop Entry]\nType=Application\n", false},
        {"no key file", false},
        {"", false},
    };
    for (const auto& c : cases) {
        write(c.content);
        EXPECT_EQ(autostart().isEnabled(), c.enabled) << c.content;
    }
    EXPECT_FALSE(autostart().setEnabled(true));
    EXPECT_TRUE(autostart().isEnabled()) << "switching on replaces what was there";
}

/// What a desktop makes of the Exec key.
std::vector<std::string> argumentsOf(const fs::path& file) {
    const GLibPtr<GKeyFile, g_key_file_unref> entry(g_key_file_new());
    g_key_file_load_from_file(entry.get(), file.c_str(), G_KEY_FILE_NONE, nullptr);
    const CharPtr exec(
        g_key_file_get_string(entry.get(), G_KEY_FILE_DESKTOP_GROUP, G_KEY_FILE_DESKTOP_KEY_EXEC, nullptr));
    StringsPtr arguments;
    std::vector<std::string> result;
    if (exec && g_shell_parse_argv(exec.get(), nullptr, arguments.out(), nullptr)) {
        for (char** argument = arguments.get(); *argument; ++argument) result.emplace_back(*argument);
    }
    return result;
}

TEST_F(AutostartTest, theCommandSurvivesQuoting) {
    EXPECT_FALSE(autostart().setEnabled(true));
    EXPECT_EQ(argumentsOf(file), (std::vector<std::string>{"/usr/bin/parvela-desktop", "--background"}));
    const std::vector<std::string> awkward = {"/home/Zoë \"x\"/$HOME/`a`/back\\slash", "two words", ""};
    EXPECT_FALSE(autostart(awkward).setEnabled(true));
    EXPECT_EQ(argumentsOf(file), awkward);
    EXPECT_FALSE(autostart({"/100%/parvela"}).setEnabled(true));
    EXPECT_EQ(argumentsOf(file), (std::vector<std::string>{"/100%%/parvela"}))
        << "a per cent sign would be a field code";
}

TEST(AutostartPlaceTest, isTheDesktopsAlsoInASandbox) {
    const fs::path program = "/app/bin/parvela-desktop";
    EXPECT_EQ(Autostart::command(program), std::vector<std::string>{program});
    g_setenv("FLATPAK_ID", "app.parvela.Parvela", TRUE);
    g_setenv("HOST_XDG_CONFIG_HOME", "/host/config", TRUE);
    EXPECT_EQ(Autostart::userFolder(), "/host/config/autostart");
    EXPECT_EQ(Autostart::command(program),
              (std::vector<std::string>{"flatpak", "run", "--command=parvela-desktop", "app.parvela.Parvela"}));
    g_unsetenv("HOST_XDG_CONFIG_HOME");
    EXPECT_EQ(Autostart::userFolder(), fs::path(g_get_home_dir()) / ".config" / "autostart");
    g_unsetenv("FLATPAK_ID");
}

}  // namespace
}  // namespace parvela
