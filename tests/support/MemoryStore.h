#pragma once

#include <ParvelaKit/KeyValueStore.h>

#include <map>
#include <string>

namespace parvela::test {

/// Settings that live as long as the object.
class MemoryStore final : public KeyValueStore {
public:
    std::optional<StoredValue> get(std::string_view key) const override {
        const auto found = values.find(key);
        return found == values.end() ? std::nullopt : std::optional(found->second);
    }
    void set(std::string_view key, StoredValue value) override {
        values.insert_or_assign(std::string(key), std::move(value));
        ++writes;
    }
    void remove(std::string_view key) override {
        if (const auto found = values.find(key); found != values.end()) values.erase(found);
        ++writes;
    }
    std::vector<std::string> keys(std::string_view prefix) const override {
        std::vector<std::string> found;
        for (auto entry = values.lower_bound(prefix); entry != values.end() && entry->first.starts_with(prefix);
             ++entry)
            found.push_back(entry->first);
        return found;
    }

    std::map<std::string, StoredValue, std::less<>> values;
    int writes = 0;
};

}  // namespace parvela::test
