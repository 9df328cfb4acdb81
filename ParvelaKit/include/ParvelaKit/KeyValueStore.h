#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace parvela {

/// Raw bytes kept in a KeyValueStore.
struct Data {
    std::string bytes;
    bool operator==(const Data&) const = default;
};

using StoredValue = std::variant<bool, std::int64_t, double, std::string, Data>;

/// The user's settings by key, kept across launches. Reading a key never fails: a missing or damaged entry reads as
/// none.
class KeyValueStore {
public:
    virtual ~KeyValueStore() = default;

    virtual std::optional<StoredValue> get(std::string_view key) const = 0;
    virtual void set(std::string_view key, StoredValue value) = 0;
    virtual void remove(std::string_view key) = 0;
    /// The keys that begin with `prefix`, in ascending order.
    virtual std::vector<std::string> keys(std::string_view prefix) const = 0;
};

}  // namespace parvela
