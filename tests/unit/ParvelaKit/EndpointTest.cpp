#include <ParvelaKit/Endpoint.h>

namespace parvela {
namespace {

/// "METHOD seg|ments ?name=value body" in one line.
std::string described(const Endpoint& endpoint) {
    std::string text = endpoint.method + " ";
    for (const std::string& segment : endpoint.path) text += segment + "|";
    text.pop_back();
    for (const QueryItem& item : endpoint.query) text += " " + item.name + "=" + item.value.value_or("(none)");
    return endpoint.body ? text + " " + *endpoint.body : text;
}

TEST(Endpoint, describesEveryCall) {
    const std::pair<Endpoint, const char*> cases[] = {
        {Endpoint::me(), "GET me"},
        {Endpoint::boards(), "GET boards"},
        {Endpoint::board("b/1"), "GET boards|b/1"},
        {Endpoint::boardSummary("b1"), "GET boards|b1|summary"},
        {Endpoint::home(), "GET home"},
        {Endpoint::people(), "GET people"},
        {Endpoint::tasks(), "GET tasks"},
        {Endpoint::tasks({.due = DueFilter::week, .board = "b1"}), "GET tasks due=week board=b1"},
        {Endpoint::tasks({.mine = true, .due = DueFilter::today, .board = "b", .includeDone = true}),
         "GET tasks mine=1 due=today board=b include_done=1"},
        {Endpoint::tasks({.due = DueFilter::overdue}), "GET tasks due=overdue"},
        {Endpoint::search("a b", std::nullopt), "GET tasks q=a b"},
        {Endpoint::search("", 5), "GET tasks q= limit=5"},
        {Endpoint::task("TSK-1"), "GET tasks|TSK-1"},
        {Endpoint::taskDetail("a/b"), "GET tasks|a/b|detail"},
        {Endpoint::createTask({.board = "b", .title = "t"}), R"(POST tasks {"board":"b","title":"t"})"},
        {Endpoint::updateTask("k", TaskPatch{.done = true}), R"(PATCH tasks|k {"done":true})"},
        {Endpoint::updateTask("k", TaskEdit{.dueTime = Patch<std::string>::clear()}),
         R"(PATCH tasks|k {"due_time":null})"},
        {Endpoint::addComment("k", {"Hello"}), R"(POST tasks|k|comments {"body":"Hello"})"},
        {Endpoint::tickChecklistItem("k", {"i1", true}), R"(POST tasks|k|checklist {"done":true,"item":"i1"})"},
        {Endpoint::notifications(), "GET notifications"},
        {Endpoint::notifications(20), "GET notifications limit=20"},
        {Endpoint::markNotifications({.all = true}), R"(POST notifications|read {"all":true,"ids":[],"read":true})"},
        {Endpoint::registerPush({.token = "t", .environment = PushRegistration::Environment::sandbox, .bundleId = "a"}),
         R"(POST devices|push {"bundleId":"a","environment":"sandbox","platform":"macos","token":"t"})"},
        {Endpoint::unregisterPush({"t"}), R"(POST devices|push|remove {"token":"t"})"},
        {Endpoint::revokeToken(), "POST token|revoke"},
    };
    for (const auto& [endpoint, expected] : cases) EXPECT_EQ(described(endpoint), expected);
}

}  // namespace
}  // namespace parvela
