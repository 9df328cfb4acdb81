#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <string_view>
#include <tuple>
#include <type_traits>

namespace parvela::json {

/// How a field's key is written. Reading takes both spellings of every field, whichever one is written.
enum class KeyStyle {
    snakeCase,  ///< "dueDate" is written "due_date"
    asNamed,    ///< written as the field is named
};

/// The JSON key of one field, from its camelCase name.
class Key {
public:
    consteval Key(std::string_view name, KeyStyle style) : name_(name), style_(style) {
        for (const char letter : name) {
            const bool upper = letter >= 'A' && letter <= 'Z';
            if (upper) snake_[size_++] = '_';
            snake_[size_++] = upper ? static_cast<char>(letter - 'A' + 'a') : letter;
        }
    }

    constexpr std::string_view camelCase() const { return name_; }
    constexpr std::string_view snakeCase() const { return {snake_.data(), size_}; }
    constexpr std::string_view written() const { return style_ == KeyStyle::asNamed ? camelCase() : snakeCase(); }

private:
    std::string_view name_;
    KeyStyle style_;
    std::array<char, 32> snake_{};
    std::size_t size_ = 0;
};

template <class Record, class Value>
struct Field {
    Key key;
    Value Record::* member;
};

/// One entry of a record's field list.
///
///     struct Point {
///         std::int64_t x = 0, y = 0;
///         static constexpr auto fields = std::tuple{json::field("x", &Point::x), json::field("y", &Point::y)};
///     };
///
/// A member of type std::optional may be absent or null, a Patch is kept, cleared or set, every other one is required.
template <class Record, class Value>
consteval Field<Record, Value> field(std::string_view name, Value Record::* member,
                                     KeyStyle style = KeyStyle::snakeCase) {
    return {Key(name, style), member};
}

/// A struct that lists its fields.
template <class T>
concept Record = requires { std::tuple_size<std::remove_cvref_t<decltype(T::fields)>>::value; };

/// An enumeration whose cases travel as text: `enumTexts(E)`, found beside the enumeration, lists case and text.
template <class T>
concept TextEnum = std::is_enum_v<T> && requires(T value) { enumTexts(value); };

template <class E>
struct EnumText {
    E value;
    std::string_view text;
};

/// The text of a case.
template <TextEnum E>
constexpr std::string_view textOf(E value) {
    for (const EnumText<E>& entry : enumTexts(value)) {
        if (entry.value == value) return entry.text;
    }
    return {};
}

}  // namespace parvela::json
