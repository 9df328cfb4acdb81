#pragma once

#include <ParvelaKit/KeyValueStore.h>

#include <optional>

#include <nlohmann/json.hpp>

namespace parvela {

/// The JSON that stands for a stored value; storedValue() gives exactly the same value back.
nlohmann::json toJson(const StoredValue& value);
std::optional<StoredValue> storedValue(const nlohmann::json& json);

}  // namespace parvela
