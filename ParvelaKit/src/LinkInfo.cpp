#include "JsonText.h"

#include <ParvelaKit/LinkInfo.h>

namespace parvela {

std::string LinkInfo::json() const {
    nlohmann::json object = {{"apiBase", apiBase.text()}, {"linkedAt", linkedAt.time_since_epoch().count()}};
    if (workspaceId) object["workspaceId"] = *workspaceId;
    if (workspaceName) object["workspaceName"] = *workspaceName;
    if (userName) object["userName"] = *userName;
    return jsonText::write(object);
}

std::optional<LinkInfo> LinkInfo::fromJson(std::string_view json) {
    const auto object = jsonText::read(json);
    if (!object || !object->is_object()) return std::nullopt;

    const auto base = jsonText::string(*object, "apiBase");
    auto apiBase = base ? Url::parse(*base) : std::nullopt;
    const auto linkedAt = jsonText::instant(*object, "linkedAt");
    if (!apiBase || !linkedAt) return std::nullopt;
    return LinkInfo{std::move(*apiBase), jsonText::string(*object, "workspaceId"),
                    jsonText::string(*object, "workspaceName"), jsonText::string(*object, "userName"), *linkedAt};
}

}  // namespace parvela
