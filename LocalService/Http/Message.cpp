#include "Http/Message.h"

#include <ParvelaKit/Text.h>

namespace parvela::service {

std::optional<std::string> Request::header(std::string_view name) const {
    for (const auto& [key, value] : headers) {
        if (equalsIgnoringAsciiCase(key, name)) return value;
    }
    return {};
}

std::optional<std::string> Request::queryItem(std::string_view name) const {
    for (const auto& [key, value] : query) {
        if (key == name) return value;
    }
    return {};
}

std::optional<std::string> Request::cookie(std::string_view name) const {
    for (const auto& [key, value] : headers) {
        if (!equalsIgnoringAsciiCase(key, "Cookie")) continue;
        std::string_view rest = value;
        while (!rest.empty()) {
            const auto end = rest.find(';');
            const std::string_view pair = trimmed(rest.substr(0, end));
            const auto equals = pair.find('=');
            if (equals != std::string_view::npos && pair.substr(0, equals) == name) {
                return std::string(pair.substr(equals + 1));
            }
            rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
        }
    }
    return {};
}

Response Response::json(const nlohmann::json& value) {
    return {.body = value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)};
}

Response Response::ok() {
    return json({{"ok", true}});
}

Response Response::redirect(std::string location) {
    return {.status = 302, .contentType = "", .headers = {{"Location", std::move(location)}}};
}

Response HttpError::response() const {
    Response response = Response::json({{"error", {{"message", message}}}});
    response.status = status;
    response.headers = headers;
    if (retryAfterSeconds) response.headers.emplace_back("Retry-After", std::to_string(*retryAfterSeconds));
    return response;
}

}  // namespace parvela::service
