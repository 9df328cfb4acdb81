#include "Support/RendererChoice.h"

#include <cstdlib>
#include <string_view>

namespace parvela {

std::vector<EnvironmentVariable> variablesFor(
    Renderer renderer, const std::function<std::optional<std::string>(const std::string&)>& environment) {
    if (renderer == Renderer::accelerated) return {};
    std::vector<EnvironmentVariable> variables{{"GSK_RENDERER", "cairo"}, {"WEBKIT_DISABLE_DMABUF_RENDERER", "1"}};
    std::erase_if(variables,
                  [&](const EnvironmentVariable& variable) { return environment(variable.name).has_value(); });
    return variables;
}

bool hasRenderNode(const std::filesystem::path& folder) {
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->path().filename().string().starts_with("renderD")) return true;
    }
    return false;
}

bool drawsSafely() {
    const char* const value = std::getenv("WEBKIT_DISABLE_DMABUF_RENDERER");
    return value && std::string_view(value) == "1";
}

void applyRenderer(Renderer renderer) {
    const auto environment = [](const std::string& name) -> std::optional<std::string> {
        const char* const value = std::getenv(name.c_str());
        return value ? std::optional<std::string>(value) : std::nullopt;
    };
    for (const auto& [name, value] : variablesFor(renderer, environment)) setenv(name.c_str(), value.c_str(), 0);
}

}  // namespace parvela
