#include "Support/RendererChoice.h"
#include "support/TemporaryFolder.h"

#include <fstream>
#include <map>

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
    const test::TemporaryFolder folder;
    const auto add = [&](const char* name) { std::ofstream(folder.path() / name).put('x'); };
    EXPECT_FALSE(hasRenderNode(folder.path() / "missing"));
    EXPECT_FALSE(hasRenderNode(folder.path()));
    add("card0");  // a display without a GPU behind it
    EXPECT_FALSE(hasRenderNode(folder.path()));
    add("renderD128");
    EXPECT_TRUE(hasRenderNode(folder.path()));
}
