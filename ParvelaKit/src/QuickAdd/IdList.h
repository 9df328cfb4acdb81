#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace parvela::QuickAdd {

/// Appends ids to a list of which it is the only writer, each id once.
class IdList {
public:
    explicit IdList(std::vector<std::string>& ids) : ids_(ids) {}

    void add(std::string_view id);

private:
    bool isNew(std::string_view id);
    void place(std::string_view id, std::uint32_t position);
    void rebuild();

    std::vector<std::string>& ids_;
    /// Once the list is long: positions in `ids_` plus one by the hash of the id, at most half filled; 0 is free.
    std::vector<std::uint32_t> slots_;
};

}  // namespace parvela::QuickAdd
