#include "JsonText.h"

#include <ParvelaKit/TimerInfo.h>

namespace parvela {

std::string TimerInfo::json() const {
    nlohmann::ordered_json object = {{"taskKey", taskKey}, {"taskTitle", taskTitle}};
    if (boardName) object["boardName"] = *boardName;
    object["startedAt"] = startedAt.time_since_epoch().count();
    return jsonText::write(object);
}

std::optional<TimerInfo> TimerInfo::fromJson(std::string_view json) {
    const auto object = jsonText::read(json);
    if (!object || !object->is_object()) return std::nullopt;

    auto key = jsonText::string(*object, "taskKey");
    auto title = jsonText::string(*object, "taskTitle");
    const auto startedAt = jsonText::instant(*object, "startedAt");
    if (!key || key->empty() || !title || !startedAt) return std::nullopt;
    return TimerInfo{std::move(*key), std::move(*title), jsonText::string(*object, "boardName"), *startedAt};
}

}  // namespace parvela
