#include <Platform/XdgPaths.h>

#include <sys/stat.h>

#include <glib.h>

namespace parvela {

namespace fs = std::filesystem;

namespace {

fs::path fromEnvironment(const char* variable, const fs::path& fallback) {
    const char* const value = g_getenv(variable);
    const fs::path path = value ? value : "";
    return path.is_absolute() ? path : fallback;
}

}  // namespace

XdgPaths XdgPaths::current() {
    const fs::path home = fromEnvironment("HOME", g_get_home_dir());
    const char* const downloads = g_get_user_special_dir(G_USER_DIRECTORY_DOWNLOAD);
    return {
        .config = fromEnvironment("XDG_CONFIG_HOME", home / ".config") / "parvela",
        .data = fromEnvironment("XDG_DATA_HOME", home / ".local/share") / "parvela",
        .state = fromEnvironment("XDG_STATE_HOME", home / ".local/state") / "parvela",
        .cache = fromEnvironment("XDG_CACHE_HOME", home / ".cache") / "parvela",
        .downloads = downloads ? fs::path(downloads) : home / "Downloads",
    };
}

bool isSandboxed() {
    return g_getenv("FLATPAK_ID") != nullptr;
}

std::error_code ensurePrivateFolder(const fs::path& folder) {
    std::error_code error;
    if (fs::is_directory(folder, error)) return {};
    if (folder.has_parent_path() && folder.parent_path() != folder) {
        if (const auto parentError = ensurePrivateFolder(folder.parent_path())) return parentError;
    }
    if (mkdir(folder.c_str(), 0700) == 0 || (errno == EEXIST && fs::is_directory(folder, error))) return {};
    return {errno, std::generic_category()};
}

}  // namespace parvela
