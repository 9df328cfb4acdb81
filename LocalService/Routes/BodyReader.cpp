#include "Routes/BodyReader.h"

#include "Store/Rows.h"

#include <ParvelaKit/CivilDate.h>
#include <ParvelaKit/Text.h>

#include <algorithm>

#include <fmt/format.h>

namespace parvela::service {

namespace {

constexpr std::size_t mostNames = 100;
constexpr Text nameText = Text::line(200);
constexpr Text shortText = Text::line(20);

/// A NUL ends a text early for much software; other control characters have no place in one line.
bool hasForbiddenCharacters(std::string_view text, bool lines) {
    return std::ranges::any_of(text, [lines](char c) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte == 0) return true;
        return !lines && (byte < 0x20 || byte == 0x7f);
    });
}

std::string upperHex(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](char c) { return c >= 'a' && c <= 'f' ? static_cast<char>(c - 32) : c; });
    return text;
}

bool isColor(std::string_view text) {
    return text.size() == 7 && text[0] == '#' &&
           std::ranges::all_of(text.substr(1), [](char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F'); });
}

bool isTimeOfDay(std::string_view text) {
    const auto digit = [&](std::size_t i) { return text[i] >= '0' && text[i] <= '9'; };
    if (text.size() != 5 || text[2] != ':' || !digit(0) || !digit(1) || !digit(3) || !digit(4)) return false;
    return (text[0] - '0') * 10 + (text[1] - '0') < 24 && text[3] < '6';
}

Patch<std::string> toPatch(const std::optional<std::string>& value) {
    return value ? Patch<std::string>::set(*value) : Patch<std::string>::clear();
}

}  // namespace

BodyReader::BodyReader(const Request& request) {
    if (trimmed(request.body).empty()) return;
    auto parsed = nlohmann::json::parse(request.body, nullptr, false);
    if (parsed.is_discarded()) {
        fail(HttpError::badRequest("The request isn't valid JSON."));
    } else if (!parsed.is_object()) {
        fail(HttpError::badRequest("The request must be a JSON object."));
    } else {
        body_ = std::move(parsed);
    }
}

void BodyReader::fail(HttpError error) {
    if (!error_) error_ = std::move(error);
}

const nlohmann::json* BodyReader::find(const char* key) const {
    const auto found = body_.find(key);
    return found == body_.end() ? nullptr : &*found;
}

bool BodyReader::isNull(const char* key) const {
    const auto* value = find(key);
    return value && value->is_null();
}

std::optional<std::string> BodyReader::checked(const char* key, const nlohmann::json& value, Text text) {
    if (!value.is_string()) {
        fail(HttpError::invalid(fmt::format("“{}” must be text.", key)));
        return {};
    }
    const auto& full = value.get_ref<const std::string&>();
    const std::string_view content = trimmed(full);
    if (hasForbiddenCharacters(content, text.lines)) {
        fail(HttpError::invalid(fmt::format("“{}” has characters that can't be stored.", key)));
    } else if (characterCount(content) > text.longest) {
        fail(HttpError::invalid(fmt::format("“{}” is too long: {} characters at most.", key, text.longest)));
    }
    return std::string(content);
}

std::string BodyReader::required(const char* key, Text text) {
    const auto value = optional(key, text);
    if (!value || value->empty()) fail(HttpError::invalid(fmt::format("“{}” is missing.", key)));
    return value.value_or("");
}

std::optional<std::string> BodyReader::optional(const char* key, Text text) {
    const auto* value = find(key);
    if (!value || value->is_null()) return {};
    return checked(key, *value, text);
}

std::optional<bool> BodyReader::flag(const char* key) {
    const auto* value = find(key);
    if (!value || value->is_null()) return {};
    if (!value->is_boolean()) {
        fail(HttpError::invalid(fmt::format("“{}” must be true or false.", key)));
        return {};
    }
    return value->get<bool>();
}

std::optional<std::int64_t> BodyReader::integer(const char* key, std::int64_t least, std::int64_t most) {
    const auto* value = find(key);
    if (!value || value->is_null()) return {};
    const bool huge = value->is_number_unsigned() && value->get<std::uint64_t>() > static_cast<std::uint64_t>(most);
    if (!value->is_number_integer() || huge || value->get<std::int64_t>() < least ||
        value->get<std::int64_t>() > most) {
        fail(HttpError::invalid(fmt::format("“{}” must be a whole number from {} to {}.", key, least, most)));
        return {};
    }
    return value->get<std::int64_t>();
}

std::optional<std::vector<std::string>> BodyReader::texts(const char* key) {
    const auto* value = find(key);
    if (!value) return {};
    std::vector<std::string> texts;
    if (value->is_null()) return texts;
    if (!value->is_array() || value->size() > mostNames) {
        fail(HttpError::invalid(fmt::format("“{}” must be a list of at most {} texts.", key, mostNames)));
        return {};
    }
    for (const auto& entry : *value) {
        if (auto text = checked(key, entry, nameText)) texts.push_back(std::move(*text));
    }
    return texts;
}

Patch<std::string> BodyReader::patch(const char* key, Text text) {
    if (!has(key)) return Patch<std::string>::keep();
    auto value = optional(key, text);
    if (value && value->empty()) value.reset();
    return toPatch(value);
}

void BodyReader::checkDate(const char* key, const std::string& text) {
    if (!CivilDate::parse(text)) fail(HttpError::invalid(fmt::format("“{}” must be a date such as 2025-03-07.", key)));
}

void BodyReader::checkTimeOfDay(const char* key, const std::string& text) {
    if (!isTimeOfDay(text)) fail(HttpError::invalid(fmt::format("“{}” must be a time such as 09:30.", key)));
}

std::optional<std::string> BodyReader::date(const char* key) {
    auto text = optional(key, shortText);
    if (text) checkDate(key, *text);
    return text;
}

Patch<std::string> BodyReader::datePatch(const char* key) {
    auto value = patch(key, shortText);
    if (value.value()) checkDate(key, *value.value());
    return value;
}

std::optional<std::string> BodyReader::timeOfDay(const char* key) {
    auto text = optional(key, shortText);
    if (text) checkTimeOfDay(key, *text);
    return text;
}

Patch<std::string> BodyReader::timeOfDayPatch(const char* key) {
    auto value = patch(key, shortText);
    if (value.value()) checkTimeOfDay(key, *value.value());
    return value;
}

std::optional<int> BodyReader::priority(const char* key) {
    if (isNull(key)) return 0;
    const auto text = optional(key, shortText);
    if (!text) return {};
    const auto found = std::ranges::find(priorities, *text);
    if (found == priorities.end()) {
        fail(HttpError::invalid(fmt::format("“{}” must be none, low, medium, high or urgent.", key)));
        return {};
    }
    return static_cast<int>(found - priorities.begin());
}

Patch<std::string> BodyReader::colorPatch(const char* key) {
    auto value = patch(key, shortText);
    if (!value.value()) return value;
    const std::string color = upperHex(*value.value());
    if (!isColor(color)) fail(HttpError::invalid(fmt::format("“{}” must be a colour such as #3B82F6.", key)));
    return Patch<std::string>::set(color);
}

}  // namespace parvela::service
