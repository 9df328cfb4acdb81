#pragma once

#include <Platform/TrayItem.h>

#include <vector>

namespace parvela {

/// The program's mark in one colour, in the sizes that trays show: dark for light panels, light for dark ones. Empty
/// where the desktop lacks the means to draw it (librsvg's image loader).
enum class MarkTone { dark, light };
std::vector<TrayIcon> markIcons(MarkTone tone);

}  // namespace parvela
