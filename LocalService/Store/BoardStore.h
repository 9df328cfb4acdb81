#pragma once

#include "Store/Database.h"
#include "Store/Rows.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace parvela::service {

/// Boards with their lists, labels, members and stars. A private board exists only for its members; every look-up takes
/// the person who asks.
class BoardStore {
public:
    BoardStore(Database& database, const Clock& clock) : database_(database), clock_(clock) {}

    std::vector<BoardRow> visibleTo(PersonId viewer);
    std::optional<BoardRow> find(BoardId id, PersonId viewer);
    bool canSee(BoardId id, PersonId person);
    /// Who can see the board: its members when it is private, else everybody.
    std::vector<PersonId> audience(BoardId id);

    struct Edit {
        std::optional<std::string> name, description, icon;
        std::optional<std::optional<std::string>> color, section;
        std::optional<bool> isPrivate, starred;
    };
    /// A new board, last in order, without lists.
    BoardId create(const std::string& name, PersonId creator);
    void edit(BoardId id, const Edit& edit, PersonId editor);
    void addMember(BoardId id, PersonId person);
    void setCompletionList(BoardId id, std::optional<ListId> list);
    void remove(BoardId id);

    struct Counts {
        std::int64_t open = 0, done = 0, overdue = 0;
    };
    /// `today` is the asking person's date text.
    Counts counts(BoardId id, std::string_view today);
    std::int64_t openDueBetween(BoardId id, std::string_view firstDay, std::string_view lastDay);

    /// In order.
    std::vector<ListRow> lists(BoardId board);
    std::optional<ListRow> findList(ListId id);
    ListId addList(BoardId board, const std::string& name);
    void renameList(ListId id, const std::string& name);
    /// Puts the list at `index` among its board's lists; beyond the end means last.
    void moveList(ListId id, std::size_t index);
    /// Only for a list without living tasks that is not the board's last one; deleted tasks in it go to another list.
    void removeList(ListId id);

    /// By id.
    std::vector<LabelRow> labels(BoardId board);
    std::optional<LabelRow> findLabel(LabelId id);
    LabelId addLabel(BoardId board, const std::string& name, const std::string& tone);
    void editLabel(LabelId id, const std::string& name, const std::string& tone);
    void removeLabel(LabelId id);

private:
    Database& database_;
    const Clock& clock_;
};

}  // namespace parvela::service
