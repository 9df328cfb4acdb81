#pragma once

#include <ParvelaKit/Json/Fields.h>
#include <ParvelaKit/Records/Patch.h>

#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include <nlohmann/json.hpp>

namespace parvela::json {

template <class T>
nlohmann::json toJson(const T& value);

namespace detail {

template <class T>
void put(nlohmann::json& object, std::string_view key, const T& value) {
    object[std::string(key)] = toJson(value);
}

template <class T>
void put(nlohmann::json& object, std::string_view key, const std::optional<T>& value) {
    if (value) put(object, key, *value);
}

template <class T>
void put(nlohmann::json& object, std::string_view key, const Patch<T>& value) {
    if (value.isKeep()) return;
    object[std::string(key)] = value.isClear() ? nlohmann::json(nullptr) : toJson(*value.value());
}

template <class T>
nlohmann::json listToJson(const std::vector<T>& values) {
    auto list = nlohmann::json::array();
    for (const T& value : values) list.push_back(toJson(value));
    return list;
}

}  // namespace detail

/// A record as a JSON value, under the keys its field list writes. Absent optionals leave their keys out.
template <class T>
nlohmann::json toJson(const T& value) {
    if constexpr (Record<T>) {
        auto object = nlohmann::json::object();
        std::apply([&](const auto&... field) { (detail::put(object, field.key.written(), value.*field.member), ...); },
                   T::fields);
        return object;
    } else if constexpr (TextEnum<T>) {
        return std::string(textOf(value));
    } else if constexpr (requires { detail::listToJson(value); }) {
        return detail::listToJson(value);
    } else {
        return value;
    }
}

/// Compact JSON text with sorted keys, so equal records give equal bytes. Never fails: invalid UTF-8 becomes U+FFFD.
template <Record T>
std::string encode(const T& record) {
    return toJson(record).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace parvela::json
