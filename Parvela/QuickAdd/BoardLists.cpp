#include "QuickAdd/BoardLists.h"

#include <utility>

namespace parvela {

std::optional<BoardLists::Lists> BoardLists::known(const std::string& board) const {
    const auto found = lists_.find(board);
    return found == lists_.end() ? std::nullopt : std::optional(found->second);
}

Task<void> BoardLists::refresh(std::string board) {
    const auto self = shared_from_this();
    if (!asking_.insert(board).second) co_return;
    const auto epoch = epoch_;

    auto connecting = model_->session.client();
    const auto api = co_await connecting;
    if (epoch != epoch_) co_return;
    if (!api) {
        asking_.erase(board);
        co_return;
    }
    auto call = api->send<BoardDetail>(Endpoint::board(board));
    auto answer = co_await call;
    if (epoch != epoch_) co_return;
    asking_.erase(board);
    if (!answer) co_return;

    Lists lists;
    for (auto& person : answer->people) {
        lists.members.push_back({std::move(person.id), std::move(person.name), std::move(person.email)});
    }
    for (auto& label : answer->labels) lists.labels.push_back({std::move(label.id), std::move(label.name)});
    const auto found = lists_.find(board);
    if (found != lists_.end() && found->second == lists) co_return;
    lists_.insert_or_assign(board, std::move(lists));
    if (onChanged) onChanged(board);
}

void BoardLists::forget() {
    ++epoch_;
    lists_.clear();
    asking_.clear();
}

}  // namespace parvela
