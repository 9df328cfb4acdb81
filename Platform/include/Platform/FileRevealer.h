#pragma once

#include <ParvelaKit/Task.h>

#include <filesystem>
#include <string>

namespace parvela {

/// Shows a file, marked, in the desktop's file manager; or else its folder. False when nothing could be opened.
/// `activationToken` lets the file manager come to the front; it may be empty.
Task<bool> revealFile(std::filesystem::path file, std::string activationToken = {});

}  // namespace parvela
