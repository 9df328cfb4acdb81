#include "AtomicFile.h"

#include <ParvelaKit/GLibPtr.h>
#include <Platform/Autostart.h>
#include <Platform/XdgPaths.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include <glib.h>

namespace parvela {

namespace fs = std::filesystem;

namespace {

using KeyFile = GLibPtr<GKeyFile, g_key_file_unref>;

constexpr std::size_t largestEntry = 64 * 1024;
constexpr const char* group = G_KEY_FILE_DESKTOP_GROUP;
constexpr const char* gnomeSwitch = "X-GNOME-Autostart-enabled";

/// An argument of an Exec key: quoted as the Desktop Entry Specification asks. The key file escapes backslashes once
/// more.
std::string quoted(const std::string& argument) {
    std::string result = "\"";
    for (const char c : argument) {
        if (std::strchr("\"`$\\", c)) result += '\\';
        result += c;
        if (c == '%') result += '%';  // no field code
    }
    return result + '"';
}

bool isPlain(const std::string& argument) {
    return !argument.empty() &&
           std::ranges::all_of(argument, [](char c) { return g_ascii_isalnum(c) || std::strchr("/-_.+=", c); });
}

}  // namespace

Autostart::Autostart(const fs::path& folder, std::string desktopEntry, std::string name,
                     std::vector<std::string> command)
    : file_(folder / (desktopEntry + ".desktop")),
      desktopEntry_(std::move(desktopEntry)),
      name_(std::move(name)),
      command_(std::move(command)) {
}

fs::path Autostart::userFolder() {
    if (isSandboxed()) {  // its configuration folder is one that no desktop reads
        const char* const host = g_getenv("HOST_XDG_CONFIG_HOME");
        return (host ? fs::path(host) : fs::path(g_get_home_dir()) / ".config") / "autostart";
    }
    return XdgPaths::current().config.parent_path() / "autostart";
}

std::vector<std::string> Autostart::command(const fs::path& program) {
    const char* const sandbox = g_getenv("FLATPAK_ID");
    if (!sandbox) return {program.string()};
    return {"flatpak", "run", "--command=" + program.filename().string(), sandbox};
}

bool Autostart::isEnabled() const {
    const auto content = readWholeFile(file_, largestEntry);
    if (!content) return false;
    const KeyFile entry(g_key_file_new());
    if (!g_key_file_load_from_data(entry.get(), content->data(), content->size(), G_KEY_FILE_NONE, nullptr))
        return false;
    if (!g_key_file_has_key(entry.get(), group, G_KEY_FILE_DESKTOP_KEY_EXEC, nullptr)) return false;
    if (g_key_file_get_boolean(entry.get(), group, G_KEY_FILE_DESKTOP_KEY_HIDDEN, nullptr)) return false;
    return !g_key_file_has_key(entry.get(), group, gnomeSwitch, nullptr) ||
           g_key_file_get_boolean(entry.get(), group, gnomeSwitch, nullptr);
}

std::error_code Autostart::setEnabled(bool enabled) {
    if (!enabled) {
        std::error_code error;
        fs::remove(file_, error);
        return error;
    }
    std::string exec;
    for (const std::string& argument : command_)
        exec += (exec.empty() ? "" : " ") + (isPlain(argument) ? argument : quoted(argument));
    const KeyFile entry(g_key_file_new());
    g_key_file_set_string(entry.get(), group, G_KEY_FILE_DESKTOP_KEY_TYPE, G_KEY_FILE_DESKTOP_TYPE_APPLICATION);
    g_key_file_set_string(entry.get(), group, G_KEY_FILE_DESKTOP_KEY_NAME, name_.c_str());
    g_key_file_set_string(entry.get(), group, G_KEY_FILE_DESKTOP_KEY_EXEC, exec.c_str());
    g_key_file_set_string(entry.get(), group, G_KEY_FILE_DESKTOP_KEY_ICON, desktopEntry_.c_str());
    gsize length = 0;
    const CharPtr content(g_key_file_to_data(entry.get(), &length, nullptr));
    if (const auto error = ensurePrivateFolder(file_.parent_path())) return error;
    return replaceFile(file_, {content.get(), length});
}

}  // namespace parvela
