#pragma once

#include <string>

namespace parvela {

/// Shows a file, selected, in the desktop's file browser; opens its folder where the file browser cannot select.
void revealInFileBrowser(const std::string& fileURI);

}  // namespace parvela
