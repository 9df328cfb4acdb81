#pragma once

#include <ParvelaKit/ServerConfig.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace parvela {

/// The pages of boards in the web app: "/b/" and the board's id, with the view's name as the query item "view".
struct BoardView {
    /// How many views there are: 0 board, 1 list, 2 table, 3 calendar, 4 timeline.
    static constexpr std::size_t count = 5;

    /// The id of the board that `page` shows; none for other pages and other sites.
    static std::optional<std::string> boardID(const Url& page, const ServerConfig& server);
    /// Which view `page` shows of its board; the first when it names none.
    static std::optional<std::size_t> viewIndex(const Url& page, const ServerConfig& server);

    /// The page of a board in one of its views. The first view is the page without a query.
    static Url page(std::string_view boardID, std::size_t viewIndex, const ServerConfig& server);
};

}  // namespace parvela
