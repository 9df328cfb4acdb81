#include "QuickAdd/IdList.h"

#include <algorithm>
#include <functional>

namespace parvela::QuickAdd {

namespace {

constexpr std::size_t longestScannedList = 16;

}  // namespace

void IdList::add(std::string_view id) {
    if (!isNew(id)) return;
    ids_.emplace_back(id);
    if (ids_.size() <= longestScannedList) return;
    if (ids_.size() * 2 > slots_.size()) {
        rebuild();
    } else {
        place(id, static_cast<std::uint32_t>(ids_.size()));
    }
}

bool IdList::isNew(std::string_view id) {
    if (slots_.empty()) return std::ranges::find(ids_, id) == ids_.end();
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t slot = std::hash<std::string_view>()(id) & mask; slots_[slot] != 0; slot = (slot + 1) & mask) {
        if (ids_[slots_[slot] - 1] == id) return false;
    }
    return true;
}

void IdList::place(std::string_view id, std::uint32_t position) {
    const std::size_t mask = slots_.size() - 1;
    std::size_t slot = std::hash<std::string_view>()(id) & mask;
    while (slots_[slot] != 0) slot = (slot + 1) & mask;
    slots_[slot] = position;
}

void IdList::rebuild() {
    slots_.assign(slots_.empty() ? longestScannedList * 8 : slots_.size() * 2, 0);
    for (std::size_t i = 0; i < ids_.size(); ++i) place(ids_[i], static_cast<std::uint32_t>(i + 1));
}

}  // namespace parvela::QuickAdd
