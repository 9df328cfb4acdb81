#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace parvela::service {

/// Where unguessable values come from. Injected, so that tests can foresee them.
class Random {
public:
    virtual ~Random() = default;

    /// Evenly distributed, 0 up to but not including `bound`.
    virtual std::uint32_t below(std::uint32_t bound) = 0;

    /// ASCII letters and digits, each chosen evenly.
    std::string alphanumeric(std::size_t length) {
        static constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
        std::string text(length, '\0');
        for (char& c : text) c = alphabet[below(sizeof alphabet - 1)];
        return text;
    }
};

}  // namespace parvela::service
