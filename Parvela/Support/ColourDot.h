#pragma once

#include <string>

namespace parvela {

/// A small filled circle as the bytes of a PNG image. `colorHex` is "#" and six hexadecimal digits; grey for anything
/// else.
std::string colourDot(const std::string& colorHex);

}  // namespace parvela
