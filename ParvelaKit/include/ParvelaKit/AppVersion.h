#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace parvela {

/// The number of a release: numbers joined by dots, such as "1.10.2". Compares number by number; what is missing at the
/// end counts as zero, so "1.2" and "1.2.0" are equal.
class AppVersion {
public:
    /// None for anything else, and for more than 8 numbers or a number of more than 9 digits.
    static std::optional<AppVersion> parse(std::string_view text);

    /// As it was written.
    const std::string& text() const noexcept { return text_; }

    std::strong_ordering operator<=>(const AppVersion& other) const noexcept { return numbers_ <=> other.numbers_; }
    bool operator==(const AppVersion& other) const noexcept { return numbers_ == other.numbers_; }

private:
    AppVersion(std::string text, std::vector<std::uint32_t> numbers);

    std::string text_;
    std::vector<std::uint32_t> numbers_;  ///< without zeros at the end
};

}  // namespace parvela
