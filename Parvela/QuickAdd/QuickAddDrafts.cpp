#include "QuickAdd/QuickAddDrafts.h"

#include <string>
#include <string_view>
#include <utility>

#include <nlohmann/json.hpp>

namespace parvela {

namespace {

constexpr std::string_view draftKey = "quickAddDraft";

}  // namespace

QuickAddSession::Draft QuickAddDrafts::read(const KeyValueStore& store) {
    QuickAddSession::Draft draft;
    const auto stored = store.get(draftKey);
    const auto* const text = stored ? std::get_if<std::string>(&*stored) : nullptr;
    if (!text) return draft;
    const auto json = nlohmann::json::parse(*text, nullptr, false);
    if (!json.is_object() || !json.contains("text") || !json["text"].is_string()) return draft;
    draft.text = json["text"].get<std::string>();
    const auto literals = json.find("literals");
    if (literals == json.end() || !literals->is_array()) return draft;
    for (const auto& range : *literals) {
        const bool isRange =
            range.is_array() && range.size() == 2 && range[0].is_number_unsigned() && range[1].is_number_unsigned();
        if (isRange) draft.literals.push_back({range[0].get<std::size_t>(), range[1].get<std::size_t>()});
    }
    return draft;
}

void QuickAddDrafts::write(KeyValueStore& store, const QuickAddSession::Draft& draft) {
    if (draft.text.empty()) {
        if (store.get(draftKey)) store.remove(draftKey);
        return;
    }
    nlohmann::json json{{"text", draft.text}, {"literals", nlohmann::json::array()}};
    for (const auto& range : draft.literals) json["literals"].push_back({range.start, range.end});
    std::string text = json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    if (store.get(draftKey) != StoredValue(text)) store.set(draftKey, std::move(text));
}

}  // namespace parvela
