#include <ParvelaKit/AppVersion.h>

#include <charconv>
#include <cstddef>
#include <system_error>
#include <utility>

namespace parvela {

namespace {

constexpr std::size_t mostNumbers = 8;
constexpr std::size_t mostDigits = 9;  // fit 32 bits

}  // namespace

AppVersion::AppVersion(std::string text, std::vector<std::uint32_t> numbers)
    : text_(std::move(text)), numbers_(std::move(numbers)) {
    while (!numbers_.empty() && numbers_.back() == 0) numbers_.pop_back();
}

std::optional<AppVersion> AppVersion::parse(std::string_view text) {
    std::vector<std::uint32_t> numbers;
    for (std::string_view rest = text;;) {
        const std::size_t dot = rest.find('.');
        const std::string_view digits = rest.substr(0, dot);
        if (digits.size() > mostDigits || numbers.size() == mostNumbers) return std::nullopt;
        std::uint32_t number = 0;
        const char* const end = digits.data() + digits.size();
        const auto [stop, error] = std::from_chars(digits.data(), end, number);
        if (error != std::errc() || stop != end) return std::nullopt;
        numbers.push_back(number);
        if (dot == std::string_view::npos) return AppVersion(std::string(text), std::move(numbers));
        rest.remove_prefix(dot + 1);
    }
}

}  // namespace parvela
