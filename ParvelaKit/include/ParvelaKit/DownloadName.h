#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace parvela {

/// The name of the file that a download is saved as. What a server or page suggests is not trusted: the result is one
/// name within a folder, without control characters, and short enough for the file system.
///
/// `isTaken` tells whether a name in the folder is in use, also by a download that has not written anything yet. A
/// taken name gets a number before its extension: "report 2.pdf".
std::string downloadName(std::string_view suggested, const std::function<bool(const std::string&)>& isTaken);

}  // namespace parvela
