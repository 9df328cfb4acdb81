#include "Routes/Backend.h"

#include <ParvelaKit/Text.h>

#include <charconv>

#include <fmt/format.h>

namespace parvela::service {

Zone Backend::zoneOf(const Account& person) const {
    if (person.timeZone) {
        if (auto zone = Zone::named(*person.timeZone)) return *zone;
    }
    return machineZone;
}

Result<TaskRow, HttpError> Backend::task(const Call& call, std::size_t argument, TaskStore::Deleted deleted) {
    const auto id = parseTaskReference(call.arguments.at(argument));
    if (!id) return Failure(HttpError::notFound("There is no such task."));
    return task(*id, call.person(), deleted);
}

Result<TaskRow, HttpError> Backend::task(TaskId id, const Account& viewer, TaskStore::Deleted deleted) {
    auto task = stores.tasks.find(id, deleted);
    // A task on somebody's private board answers like one that does not exist.
    if (!task || !stores.boards.canSee(task->board, viewer.id))
        return Failure(HttpError::notFound("There is no such task."));
    return std::move(*task);
}

Result<BoardRow, HttpError> Backend::board(const Call& call, std::size_t argument) {
    const auto id = call.id<BoardId>(argument);
    auto board = id ? stores.boards.find(*id, call.person().id) : std::nullopt;
    if (!board) return Failure(HttpError::notFound("There is no such board."));
    return std::move(*board);
}

Result<ListId, HttpError> Backend::listOf(const BoardRow& board, const std::string& text) {
    const auto lists = stores.boards.lists(board.id);
    const auto id = ListId::parse(text);
    for (const ListRow& list : lists) {
        if (list.id == id) return list.id;
    }
    const std::string name = lowercased(text);
    for (const ListRow& list : lists) {
        if (lowercased(list.name) == name) return list.id;
    }
    return Failure(HttpError::invalid(fmt::format("There is no such list on the board “{}”.", board.name)));
}

Result<int, HttpError> Backend::limit(const Request& request, int usual, int most) {
    const auto text = request.queryItem("limit");
    if (!text) return usual;
    int value = 0;
    const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), value);
    if (error != std::errc{} || end != text->data() + text->size() || value < 1) {
        return Failure(HttpError::badRequest("“limit” must be a whole number from 1."));
    }
    return std::min(value, most);
}

}  // namespace parvela::service
