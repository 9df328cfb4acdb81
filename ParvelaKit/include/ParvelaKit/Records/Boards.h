#pragma once

#include <ParvelaKit/Json/Fields.h>
#include <ParvelaKit/Records/People.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace parvela {

/// One board with its lists, labels and people.
struct BoardDetail {
    struct List {
        std::string id;
        std::string name;
        std::int64_t open = 0;
        std::int64_t total = 0;

        bool operator==(const List&) const = default;
        static constexpr auto fields = std::tuple{json::field("id", &List::id), json::field("name", &List::name),
                                                  json::field("open", &List::open), json::field("total", &List::total)};
    };

    std::string id;
    std::string name;
    std::string description;
    std::string icon;
    bool isPrivate = false;                       ///< "private"
    std::optional<std::string> completionListId;  ///< the list that finished tasks move to
    std::vector<List> lists;
    std::vector<LabelTag> labels;
    std::vector<Person> people;
    std::int64_t open = 0;
    std::int64_t done = 0;
    std::int64_t overdue = 0;
    std::optional<std::string> url;

    bool operator==(const BoardDetail&) const = default;
    static constexpr auto fields = std::tuple{
        json::field("id", &BoardDetail::id),
        json::field("name", &BoardDetail::name),
        json::field("description", &BoardDetail::description),
        json::field("icon", &BoardDetail::icon),
        json::field("private", &BoardDetail::isPrivate),
        json::field("completionListId", &BoardDetail::completionListId, json::KeyStyle::asNamed),
        json::field("lists", &BoardDetail::lists),
        json::field("labels", &BoardDetail::labels),
        json::field("people", &BoardDetail::people),
        json::field("open", &BoardDetail::open),
        json::field("done", &BoardDetail::done),
        json::field("overdue", &BoardDetail::overdue),
        json::field("url", &BoardDetail::url),
    };
};

/// A list of a board, by name.
struct BoardList {
    std::string id;
    std::string name;

    bool operator==(const BoardList&) const = default;
    static constexpr auto fields = std::tuple{json::field("id", &BoardList::id), json::field("name", &BoardList::name)};
};

/// A board as the list of boards shows it.
struct Board {
    std::string id;
    std::string name;
    bool isPrivate = false;  ///< "private"
    std::vector<BoardList> lists;
    std::optional<std::string> colorHex;

    bool operator==(const Board&) const = default;
    static constexpr auto fields = std::tuple{
        json::field("id", &Board::id), json::field("name", &Board::name), json::field("private", &Board::isPrivate),
        json::field("lists", &Board::lists), json::field("colorHex", &Board::colorHex)};
};

/// The boards of the token's workspace, and the workspaces the person belongs to.
struct BoardsResponse {
    struct Workspace {
        std::string id;
        std::string name;
        std::optional<std::string> role;

        bool operator==(const Workspace&) const = default;
        static constexpr auto fields =
            std::tuple{json::field("id", &Workspace::id), json::field("name", &Workspace::name),
                       json::field("role", &Workspace::role)};
    };

    Me::Workspace workspace;
    std::vector<Workspace> workspaces;
    std::vector<Board> boards;

    bool operator==(const BoardsResponse&) const = default;
    static constexpr auto fields = std::tuple{json::field("workspace", &BoardsResponse::workspace),
                                              json::field("workspaces", &BoardsResponse::workspaces),
                                              json::field("boards", &BoardsResponse::boards)};
};

/// Counts of one board.
struct BoardSummary {
    struct ListCount {
        std::string id;
        std::string name;
        std::int64_t open = 0;
        std::int64_t total = 0;

        bool operator==(const ListCount&) const = default;
        static constexpr auto fields =
            std::tuple{json::field("id", &ListCount::id), json::field("name", &ListCount::name),
                       json::field("open", &ListCount::open), json::field("total", &ListCount::total)};
    };

    std::string board;
    std::string boardId;
    std::vector<ListCount> lists;
    std::int64_t open = 0;
    std::int64_t done = 0;
    std::int64_t overdue = 0;
    std::int64_t dueThisWeek = 0;

    bool operator==(const BoardSummary&) const = default;
    static constexpr auto fields = std::tuple{
        json::field("board", &BoardSummary::board),
        json::field("boardId", &BoardSummary::boardId),
        json::field("lists", &BoardSummary::lists),
        json::field("open", &BoardSummary::open),
        json::field("done", &BoardSummary::done),
        json::field("overdue", &BoardSummary::overdue),
        json::field("dueThisWeek", &BoardSummary::dueThisWeek),
    };
};

}  // namespace parvela
