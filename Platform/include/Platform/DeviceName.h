#pragma once

#include <filesystem>
#include <string>

namespace parvela {

/// What people call this machine: its pretty host name, else its host name, else "Mac". One line, at most 64
/// characters.
std::string deviceName();

/// The same from a given machine-info file (see machine-info(5)) and host name.
std::string deviceName(const std::filesystem::path& machineInfo, const std::string& hostName);

}  // namespace parvela
