#include "Support/RendererChoice.h"

#include <filesystem>
#include <fstream>
#include <map>
#include <unistd.h>

using namespace parvela;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::vector<EnvironmentVariable> variables(Renderer renderer, std::map<std::string, std::string> environment) {
    return variablesFor(renderer, [environment](const std::string& name) -> std::optional<std::string> {
        const auto found = environment.find(name);
        return found == environment.end() ? std::nullopt : std::optional(found->second);
    });
}

/// A folder that goes with the test.
class Folder {
public:
    Folder() : path_(std::filesystem::temp_directory_path() / ("parvela-dri-" + std::to_string(getpid()))) {
        std::filesystem::create_directory(path_);
    }
    ~Folder() { std::filesystem::remove_all(path_); }
    const std::filesystem::path& path() const { return path_; }
    void add(const char* name) const { std::ofstream(path_ / name).put('x'); }

private:
    std::filesystem::path path_;
};

}  // namespace

TEST(RendererChoice, theSafeRendererNeedsTwoVariablesAndNeverReplacesTheUsersOwn) {
    const EnvironmentVariable gsk{"GSK_RENDERER", "cairo"};
    const EnvironmentVariable webKit{"WEBKIT_DISABLE_DMABUF_RENDERER", "1"};
    EXPECT_THAT(variables(Renderer::safe, {}), ElementsAre(gsk, webKit));
    EXPECT_THAT(variables(Renderer::safe, {{"GSK_RENDERER", "gl"}}), ElementsAre(webKit));
    EXPECT_THAT(variables(Renderer::safe, {{"WEBKIT_DISABLE_DMABUF_RENDERER", ""}}), ElementsAre(gsk));
    EXPECT_THAT(variables(Renderer::accelerated, {}), IsEmpty());
}

TEST(RendererChoice, aGpuIsARenderNode) {
    const Folder folder;
    EXPECT_FALSE(hasRenderNode(folder.path() / "missing"));
    EXPECT_FALSE(hasRenderNode(folder.path()));
    folder.add("card0");  // a display without a GPU behind it
    EXPECT_FALSE(hasRenderNode(folder.path()));
    folder.add("renderD128");
    EXPECT_TRUE(hasRenderNode(folder.path()));
}
