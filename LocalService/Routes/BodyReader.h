#pragma once

#include "Http/Message.h"

#include <ParvelaKit/Records/Patch.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace parvela::service {

/// Reads the fields of a JSON request body. Remembers the first thing that is wrong, so that a handler reads all its
/// fields and then asks once:
///
///     BodyReader body(request);
///     const std::string title = body.required("title", Text::line(500));
///     if (auto error = body.error()) return Failure(*error);
class BodyReader {
public:
    /// What a text may be: how many user-perceived characters, and whether it may have line breaks.
    struct Text {
        std::size_t longest = 0;
        bool lines = false;

        static constexpr Text line(std::size_t longest) { return {longest, false}; }
        static constexpr Text block(std::size_t longest) { return {longest, true}; }
    };

    /// An empty body counts as an empty object.
    explicit BodyReader(const Request& request);

    /// None when everything read so far was as it should be.
    const std::optional<HttpError>& error() const noexcept { return error_; }
    void fail(HttpError error);

    /// Without white space at its ends; must not be empty.
    std::string required(const char* key, Text text);
    /// Absent or null is none.
    std::optional<std::string> optional(const char* key, Text text);
    std::optional<bool> flag(const char* key);
    std::optional<std::int64_t> integer(const char* key, std::int64_t least, std::int64_t most);
    std::optional<std::vector<std::string>> texts(const char* key);
    /// Absent keeps, null or an empty text clears.
    Patch<std::string> patch(const char* key, Text text);
    bool isNull(const char* key) const;
    bool has(const char* key) const { return find(key) != nullptr; }

    /// "YYYY-MM-DD" of a day that exists.
    std::optional<std::string> date(const char* key);
    Patch<std::string> datePatch(const char* key);
    /// "HH:MM", 00:00 to 23:59.
    std::optional<std::string> timeOfDay(const char* key);
    Patch<std::string> timeOfDayPatch(const char* key);
    /// Index into priorities; null is "none".
    std::optional<int> priority(const char* key);
    /// "#RRGGBB", in upper case; absent keeps, null clears.
    Patch<std::string> colorPatch(const char* key);

private:
    const nlohmann::json* find(const char* key) const;
    std::optional<std::string> checked(const char* key, const nlohmann::json& value, Text text);
    void checkDate(const char* key, const std::string& text);
    void checkTimeOfDay(const char* key, const std::string& text);

    nlohmann::json body_ = nlohmann::json::object();
    std::optional<HttpError> error_;
};

using Text = BodyReader::Text;

}  // namespace parvela::service
