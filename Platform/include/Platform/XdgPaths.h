#pragma once

#include <filesystem>
#include <system_error>

namespace parvela {

/// Where Parvela keeps its files, by the XDG Base Directory Specification. Relative settings are ignored, as it asks.
/// The folders need not exist.
struct XdgPaths {
    std::filesystem::path config;
    std::filesystem::path data;
    std::filesystem::path state;
    std::filesystem::path cache;
    /// The user's own folder for downloads, not one of Parvela's.
    std::filesystem::path downloads;

    /// From the environment of this process.
    static XdgPaths current();
};

/// Whether the program runs in a Flatpak, where folders and the names on the bus are not the desktop's own.
bool isSandboxed();

/// Makes a private folder (mode 0700) with its parents. A folder that exists keeps its mode.
std::error_code ensurePrivateFolder(const std::filesystem::path& folder);

}  // namespace parvela
