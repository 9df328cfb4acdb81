#pragma once

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace parvela {

/// Whether the desktop starts the program when the user logs in: an entry of the XDG autostart folder.
class Autostart {
public:
    /// `folder` is the user's autostart folder, `desktopEntry` the program's desktop file without ".desktop", `command`
    /// the program's absolute path and its arguments.
    Autostart(const std::filesystem::path& folder, std::string desktopEntry, std::string name,
              std::vector<std::string> command);

    /// "autostart" in the user's configuration folder, also from inside a sandbox.
    static std::filesystem::path userFolder();
    /// What the desktop runs to start this program, given by its absolute path.
    static std::vector<std::string> command(const std::filesystem::path& program);

    /// An entry that the user or the desktop switched off counts as off.
    bool isEnabled() const;
    std::error_code setEnabled(bool enabled);

private:
    std::filesystem::path file_;
    std::string desktopEntry_, name_;
    std::vector<std::string> command_;
};

}  // namespace parvela
