#include "StoredValueJson.h"

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Text.h>

#include <charconv>
#include <cmath>

namespace parvela {

namespace {

// JSON has no bytes, no text that is not Unicode and no infinite numbers. They travel as an object with one of these
// keys.
constexpr const char* dataKey = "data";
constexpr const char* bytesKey = "text";
constexpr const char* numberKey = "number";

std::string base64(const std::string& bytes) {
    if (bytes.empty()) return {};
    return CharPtr(g_base64_encode(reinterpret_cast<const guchar*>(bytes.data()), bytes.size())).get();
}

std::optional<std::string> fromBase64(const std::string& text) {
    gsize length = 0;
    const GLibPtr<guchar, g_free> bytes(g_base64_decode(text.c_str(), &length));
    std::string result = length == 0 ? std::string() : std::string(reinterpret_cast<char*>(bytes.get()), length);
    // GLib skips what it does not know; text that does not come back the same was no base64.
    return base64(result) == text ? std::optional(std::move(result)) : std::nullopt;
}

std::optional<StoredValue> fromObject(const nlohmann::json& object) {
    if (object.size() != 1 || !object.begin()->is_string()) return std::nullopt;
    const auto& text = object.begin()->get_ref<const std::string&>();
    if (object.begin().key() == numberKey) {
        if (text == "nan") return std::nan("");
        if (text == "inf") return HUGE_VAL;
        if (text == "-inf") return -HUGE_VAL;
        return std::nullopt;
    }
    auto bytes = fromBase64(text);
    if (!bytes) return std::nullopt;
    if (object.begin().key() == dataKey) return Data{std::move(*bytes)};
    if (object.begin().key() == bytesKey) return std::move(*bytes);
    return std::nullopt;
}

}  // namespace

nlohmann::json toJson(const StoredValue& value) {
    struct Visitor {
        nlohmann::json operator()(bool flag) const { return flag; }
        nlohmann::json operator()(std::int64_t number) const { return number; }
        nlohmann::json operator()(double number) const {
            if (std::isfinite(number)) return number;
            return {{numberKey, std::isnan(number) ? "nan" : number > 0 ? "inf" : "-inf"}};
        }
        nlohmann::json operator()(const std::string& text) const {
            if (isValidUtf8(text)) return text;
            return {{bytesKey, base64(text)}};
        }
        nlohmann::json operator()(const Data& data) const { return {{dataKey, base64(data.bytes)}}; }
    };
    return std::visit(Visitor{}, value);
}

std::optional<StoredValue> storedValue(const nlohmann::json& json) {
    using Type = nlohmann::json::value_t;
    switch (json.type()) {
        case Type::boolean:
            return json.get<bool>();
        case Type::number_integer:
            return json.get<std::int64_t>();
        case Type::number_unsigned:
            if (json.get<std::uint64_t>() > static_cast<std::uint64_t>(INT64_MAX)) return std::nullopt;
            return json.get<std::int64_t>();
        case Type::number_float:
            return json.get<double>();
        case Type::string:
            return json.get<std::string>();
        case Type::object:
            return fromObject(json);
        default:
            return std::nullopt;
    }
}

}  // namespace parvela
