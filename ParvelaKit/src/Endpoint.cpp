#include <ParvelaKit/Endpoint.h>
#include <ParvelaKit/Json/Encoder.h>

#include <utility>

namespace parvela {
namespace {

template <class... Segments>
std::vector<std::string> segments(const Segments&... parts) {
    return {std::string(parts)...};
}

Endpoint get(std::vector<std::string> path, std::vector<QueryItem> query = {}) {
    return {"GET", std::move(path), std::move(query), std::nullopt};
}

Endpoint post(std::vector<std::string> path, std::optional<std::string> body = std::nullopt) {
    return {"POST", std::move(path), {}, std::move(body)};
}

Endpoint patch(std::vector<std::string> path, std::string body) {
    return {"PATCH", std::move(path), {}, std::move(body)};
}

void addLimit(std::vector<QueryItem>& query, std::optional<std::int64_t> limit) {
    if (limit) query.push_back({"limit", std::to_string(*limit)});
}

}  // namespace

const Endpoint& Endpoint::me() {
    static const Endpoint shared = get(segments("me"));
    return shared;
}

const Endpoint& Endpoint::boards() {
    static const Endpoint shared = get(segments("boards"));
    return shared;
}

const Endpoint& Endpoint::home() {
    static const Endpoint shared = get(segments("home"));
    return shared;
}

const Endpoint& Endpoint::people() {
    static const Endpoint shared = get(segments("people"));
    return shared;
}

Endpoint Endpoint::board(std::string_view id) {
    return get(segments("boards", id));
}

Endpoint Endpoint::boardSummary(std::string_view id) {
    return get(segments("boards", id, "summary"));
}

Endpoint Endpoint::tasks(const TaskListOptions& options) {
    std::vector<QueryItem> query;
    if (options.mine) query.push_back({"mine", "1"});
    if (options.due) query.push_back({"due", std::string(json::textOf(*options.due))});
    if (options.board) query.push_back({"board", options.board});
    if (options.includeDone) query.push_back({"include_done", "1"});
    return get(segments("tasks"), std::move(query));
}

Endpoint Endpoint::search(std::string_view text, std::optional<std::int64_t> limit) {
    std::vector<QueryItem> query = {{"q", std::string(text)}};
    addLimit(query, limit);
    return get(segments("tasks"), std::move(query));
}

Endpoint Endpoint::task(std::string_view key) {
    return get(segments("tasks", key));
}

Endpoint Endpoint::taskDetail(std::string_view key) {
    return get(segments("tasks", key, "detail"));
}

Endpoint Endpoint::createTask(const NewTask& task) {
    return post(segments("tasks"), json::encode(task));
}

Endpoint Endpoint::updateTask(std::string_view key, const TaskPatch& changes) {
    return patch(segments("tasks", key), json::encode(changes));
}

Endpoint Endpoint::updateTask(std::string_view key, const TaskEdit& edit) {
    return patch(segments("tasks", key), json::encode(edit));
}

Endpoint Endpoint::addComment(std::string_view key, const CommentDraft& comment) {
    return post(segments("tasks", key, "comments"), json::encode(comment));
}

Endpoint Endpoint::tickChecklistItem(std::string_view key, const ChecklistTick& tick) {
    return post(segments("tasks", key, "checklist"), json::encode(tick));
}

Endpoint Endpoint::notifications(std::optional<std::int64_t> limit) {
    std::vector<QueryItem> query;
    addLimit(query, limit);
    return get(segments("notifications"), std::move(query));
}

Endpoint Endpoint::markNotifications(const NotificationMark& mark) {
    return post(segments("notifications", "read"), json::encode(mark));
}

Endpoint Endpoint::registerPush(const PushRegistration& registration) {
    return post(segments("devices", "push"), json::encode(registration));
}

Endpoint Endpoint::unregisterPush(const PushRemoval& removal) {
    return post(segments("devices", "push", "remove"), json::encode(removal));
}

Endpoint Endpoint::revokeToken() {
    return post(segments("token", "revoke"));
}

}  // namespace parvela
