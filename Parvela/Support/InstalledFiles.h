#pragma once

#include <filesystem>

namespace parvela {

/// Where this program stands.
std::filesystem::path programFolder();

/// The folder with the module that WebKit's web process loads: in the build tree and once installed it stands at the
/// same place relative to the program.
std::filesystem::path webProcessFolder();

}  // namespace parvela
