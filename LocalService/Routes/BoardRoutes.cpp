#include "Domain/Contains.h"
#include "Routes/BodyReader.h"
#include "Routes/Routes.h"

#include <ParvelaKit/Json/Encoder.h>

#include <algorithm>

#include <fmt/format.h>

namespace parvela::service {

namespace {

constexpr Text boardNameText = Text::line(200);
constexpr Text boardDescriptionText = Text::block(5000);
constexpr Text sectionText = Text::line(100);
constexpr Text iconText = Text::line(20);
constexpr Text listNameText = Text::line(100);
constexpr Text labelNameText = Text::line(50);
constexpr Text toneText = Text::line(20);
constexpr std::int64_t mostLists = 1000;
/// What one board page holds at most: open tasks, and done ones besides.
constexpr int mostCards = 5000;
constexpr int mostDoneCards = 500;
constexpr auto doneShown = std::chrono::days(30);

nlohmann::json orNull(const std::optional<std::string>& text) {
    return text ? nlohmann::json(*text) : nullptr;
}

nlohmann::json boardAnswer(Backend& backend, Call& call, const BoardRow& board) {
    nlohmann::json json = json::toJson(backend.answers(call).glance(board));
    json["color"] = orNull(board.color);
    json["section"] = orNull(board.section);
    return json;
}

nlohmann::json listAnswer(const ListRow& list) {
    return {{"id", list.id.text()}, {"name", list.name}, {"open", list.open}, {"total", list.total}};
}

nlohmann::json labelAnswer(const LabelRow& label) {
    return {{"id", label.id.text()}, {"name", label.name}, {"tone", label.tone}};
}

BoardStore::Edit readBoardEdit(BodyReader& body) {
    BoardStore::Edit edit;
    if (body.has("name")) edit.name = body.required("name", boardNameText);
    if (body.has("description")) edit.description = body.optional("description", boardDescriptionText).value_or("");
    if (body.has("icon")) edit.icon = body.optional("icon", iconText).value_or("");
    const auto patched = [](const Patch<std::string>& patch) -> std::optional<std::optional<std::string>> {
        if (patch.isKeep()) return {};
        return patch.value() ? std::optional(*patch.value()) : std::optional<std::string>();
    };
    edit.color = patched(body.colorPatch("color"));
    edit.section = patched(body.patch("section", sectionText));
    edit.isPrivate = body.flag("private");
    edit.starred = body.flag("starred");
    return edit;
}

void announce(Backend& backend, BoardId board) {
    backend.changes.publish({.boards = {board}, .boardList = true});
}

Answer createBoard(Backend& backend, Call& call) {
    BodyReader body(call.request);
    const std::string name = body.required("name", boardNameText);
    const BoardStore::Edit edit = readBoardEdit(body);
    if (body.error()) return Failure(*body.error());
    auto& boards = backend.stores.boards;
    Transaction transaction(backend.stores.database);
    const BoardId id = boards.create(name, call.person().id);
    boards.edit(id, edit, call.person().id);
    boards.addList(id, "To do");
    boards.addList(id, "In progress");
    boards.setCompletionList(id, boards.addList(id, "Done"));
    transaction.commit();
    announce(backend, id);
    return Response::json(boardAnswer(backend, call, *boards.find(id, call.person().id)));
}

Answer fullBoard(Backend& backend, Call& call) {
    const auto board = backend.board(call);
    if (!board) return Failure(board.error());
    auto answers = backend.answers(call);
    nlohmann::json details = json::toJson(answers.board(*board));
    details["color"] = orNull(board->color);
    details["section"] = orNull(board->section);
    details["starred"] = board->starred;
    const TaskQueries::Scope scope{.viewer = call.person().id, .board = board->id};
    auto ids = backend.stores.queries.open(scope, {}, mostCards + 1);
    const bool more = ids.size() > mostCards;
    if (more) ids.pop_back();
    for (const TaskId id :
         backend.stores.queries.completedSince(scope, backend.clock.now() - doneShown, {}, mostDoneCards)) {
        ids.push_back(id);
    }
    return Response::json({{"board", details},
                           {"tasks", answers.cards(ids)},
                           {"more", more},
                           {"today", backend.today(call.person()).text()}});
}

/// The list of the call's path with the board it belongs to; 404 when the caller may not see that.
Result<ListRow, HttpError> listOfCall(Backend& backend, Call& call) {
    const auto id = call.id<ListId>(0);
    auto list = id ? backend.stores.boards.findList(*id) : std::nullopt;
    if (!list || !backend.stores.boards.canSee(list->board, call.person().id)) {
        return Failure(HttpError::notFound("There is no such list."));
    }
    return std::move(*list);
}

Result<LabelRow, HttpError> labelOfCall(Backend& backend, Call& call) {
    const auto id = call.id<LabelId>(0);
    auto label = id ? backend.stores.boards.findLabel(*id) : std::nullopt;
    if (!label || !backend.stores.boards.canSee(label->board, call.person().id)) {
        return Failure(HttpError::notFound("There is no such label."));
    }
    return std::move(*label);
}

Answer editList(Backend& backend, Call& call) {
    const auto list = listOfCall(backend, call);
    if (!list) return Failure(list.error());
    BodyReader body(call.request);
    const auto name = body.has("name") ? std::optional(body.required("name", listNameText)) : std::nullopt;
    const auto position = body.integer("position", 0, mostLists);
    if (body.error()) return Failure(*body.error());
    Transaction transaction(backend.stores.database);
    if (name) backend.stores.boards.renameList(list->id, *name);
    if (position) backend.stores.boards.moveList(list->id, static_cast<std::size_t>(*position));
    transaction.commit();
    announce(backend, list->board);
    return Response::json(listAnswer(*backend.stores.boards.findList(list->id)));
}

Answer removeList(Backend& backend, Call& call) {
    const auto list = listOfCall(backend, call);
    if (!list) return Failure(list.error());
    if (list->total > 0) return Failure(HttpError::invalid("Move this list's tasks away first."));
    if (backend.stores.boards.lists(list->board).size() < 2) {
        return Failure(HttpError::invalid("A board needs at least one list."));
    }
    backend.stores.boards.removeList(list->id);
    announce(backend, list->board);
    return Response::ok();
}

Answer addLabel(Backend& backend, Call& call) {
    const auto board = backend.board(call);
    if (!board) return Failure(board.error());
    BodyReader body(call.request);
    const std::string name = body.required("name", labelNameText);
    const std::string tone = body.optional("tone", toneText).value_or("gray");
    if (!contains(tones, tone)) body.fail(HttpError::invalid("This label colour isn't known."));
    if (body.error()) return Failure(*body.error());
    const LabelId id = backend.stores.boards.addLabel(board->id, name, tone);
    announce(backend, board->id);
    return Response::json(labelAnswer({id, board->id, name, tone}));
}

Answer editLabel(Backend& backend, Call& call) {
    auto label = labelOfCall(backend, call);
    if (!label) return Failure(label.error());
    BodyReader body(call.request);
    if (body.has("name")) label->name = body.required("name", labelNameText);
    label->tone = body.optional("tone", toneText).value_or(label->tone);
    if (!contains(tones, label->tone)) body.fail(HttpError::invalid("This label colour isn't known."));
    if (body.error()) return Failure(*body.error());
    backend.stores.boards.editLabel(label->id, label->name, label->tone);
    announce(backend, label->board);
    return Response::json(labelAnswer(*label));
}

}  // namespace

void addBoardRoutes(Router& router, Backend& backend) {
    const auto bound = bindTo(backend);
    using enum Access;
    router.add("GET", "/api/boards", reader, [&](Call& call) -> Answer {
        auto boards = nlohmann::json::array();
        for (const BoardRow& board : backend.stores.boards.visibleTo(call.person().id)) {
            boards.push_back(boardAnswer(backend, call, board));
        }
        return Response::json({{"boards", boards}});
    });
    router.add("POST", "/api/boards", writer, bound(createBoard));
    router.add("PATCH", "/api/boards/{}", writer, [&](Call& call) -> Answer {
        const auto board = backend.board(call);
        if (!board) return Failure(board.error());
        BodyReader body(call.request);
        const BoardStore::Edit edit = readBoardEdit(body);
        if (body.error()) return Failure(*body.error());
        backend.stores.boards.edit(board->id, edit, call.person().id);
        announce(backend, board->id);
        return Response::json(boardAnswer(backend, call, *backend.stores.boards.find(board->id, call.person().id)));
    });
    router.add("DELETE", "/api/boards/{}", writer, [&](Call& call) -> Answer {
        const auto board = backend.board(call);
        if (!board) return Failure(board.error());
        backend.stores.boards.remove(board->id);
        backend.changes.publish({.boardList = true});
        return Response::ok();
    });
    router.add("GET", "/api/boards/{}/full", reader, bound(fullBoard));
    router.add("POST", "/api/boards/{}/lists", writer, [&](Call& call) -> Answer {
        const auto board = backend.board(call);
        if (!board) return Failure(board.error());
        BodyReader body(call.request);
        const std::string name = body.required("name", listNameText);
        if (body.error()) return Failure(*body.error());
        const ListId id = backend.stores.boards.addList(board->id, name);
        announce(backend, board->id);
        return Response::json(listAnswer(*backend.stores.boards.findList(id)));
    });
    router.add("PATCH", "/api/lists/{}", writer, bound(editList));
    router.add("DELETE", "/api/lists/{}", writer, bound(removeList));
    router.add("POST", "/api/boards/{}/labels", writer, bound(addLabel));
    router.add("PATCH", "/api/labels/{}", writer, bound(editLabel));
    router.add("DELETE", "/api/labels/{}", writer, [&](Call& call) -> Answer {
        const auto label = labelOfCall(backend, call);
        if (!label) return Failure(label.error());
        backend.stores.boards.removeLabel(label->id);
        announce(backend, label->board);
        return Response::ok();
    });
}

}  // namespace parvela::service
