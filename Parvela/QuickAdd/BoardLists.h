#pragma once

#include "Model/AppModel.h"

#include <ParvelaKit/QuickAddRecords.h>
#include <ParvelaKit/Task.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace parvela {

/// The people and labels of boards as the service named them last, for the names in a quick-add line.
///
/// Held by a shared pointer, because a call keeps it alive until it has ended.
class BoardLists : public std::enable_shared_from_this<BoardLists> {
public:
    struct Lists {
        std::vector<QuickAddMember> members;
        std::vector<QuickAddLabel> labels;

        bool operator==(const Lists&) const = default;
    };

    explicit BoardLists(std::shared_ptr<AppModel> model) : model_(std::move(model)) {}

    /// None while they are not known.
    std::optional<Lists> known(const std::string& board) const;
    /// Asks the service, unless it is being asked for that board already. What was known stays when it does not answer.
    Task<void> refresh(std::string board);
    /// Forgets everything; answers that are still on their way count no more.
    void forget();

    /// The lists of a board are known now, or are others than before.
    std::function<void(const std::string& board)> onChanged;

private:
    std::shared_ptr<AppModel> model_;
    std::map<std::string, Lists> lists_;
    std::set<std::string> asking_;
    std::uint64_t epoch_ = 0;
};

}  // namespace parvela
