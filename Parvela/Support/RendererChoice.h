#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace parvela {

/// How windows and pages are drawn. Decided once, before the toolkit starts, through environment variables.
enum class Renderer {
    accelerated,  ///< the toolkit's and WebKit's own choice
    safe,         ///< without the graphics driver: works everywhere, and is the faster one where there is no GPU
};

struct EnvironmentVariable {
    std::string name;
    std::string value;
    bool operator==(const EnvironmentVariable&) const = default;
};

/// The variables that `renderer` needs and that the user has not set; what the user set always stays.
std::vector<EnvironmentVariable> variablesFor(
    Renderer renderer, const std::function<std::optional<std::string>(const std::string&)>& environment);

/// Whether the kernel offers a GPU for drawing: a render node in `folder`, normally /dev/dri.
bool hasRenderNode(const std::filesystem::path& folder = "/dev/dri");

/// Whether pages of this process are drawn without the graphics driver, by our choice or by the user's.
bool drawsSafely();

/// Applies the choice to this process.
void applyRenderer(Renderer renderer);

}  // namespace parvela
