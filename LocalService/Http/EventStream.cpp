#include "Http/EventStream.h"

#include "Domain/Contains.h"

#include <algorithm>

#include <libsoup/soup.h>

namespace parvela::service {

namespace {

constexpr guint pingSeconds = 25;
/// Where more windows than this are open, the oldest one loses its live updates.
constexpr std::size_t mostStreams = 200;

}  // namespace

EventStream::EventStream(BoardStore& boards, ChangeFeed& changes)
    : boards_(boards), subscription_(changes.subscribe([this](const Change& change) { publish(change); })) {
    pingTimer_ = g_timeout_add_seconds(
        pingSeconds,
        [](gpointer self) -> gboolean {
            static_cast<EventStream*>(self)->ping();
            return G_SOURCE_CONTINUE;
        },
        this);
}

EventStream::~EventStream() {
    g_source_remove(pingTimer_);
}

Response EventStream::open(PersonId person, std::string sessionHash) {
    Response response{.contentType = "text/event-stream"};
    response.stream = [this, person, sessionHash = std::move(sessionHash)](SoupServerMessage* message) {
        SoupMessageHeaders* const headers = soup_server_message_get_response_headers(message);
        soup_message_headers_set_encoding(headers, SOUP_ENCODING_CHUNKED);
        soup_message_headers_set_content_type(headers, "text/event-stream", nullptr);
        soup_message_body_set_accumulate(soup_server_message_get_response_body(message), FALSE);
        if (streams_.size() >= mostStreams) {
            end(streams_.front());
            streams_.pop_front();
        }
        Stream& stream = streams_.emplace_back(Stream{Ref<SoupServerMessage>::ref(message), person, sessionHash, {}});
        stream.finished = connect<void(SoupServerMessage*)>(message, "finished", [this](SoupServerMessage* gone) {
            // The handler ends with its stream, so nothing may follow.
            streams_.remove_if([gone](const Stream& each) { return each.message.get() == gone; });
        });
        send(stream, ": connected\n\n");
    };
    return response;
}

void EventStream::closeSession(std::string_view sessionHash) {
    std::erase_if(streams_, [&](const Stream& stream) {
        if (stream.sessionHash != sessionHash) return false;
        end(stream);
        return true;
    });
}

void EventStream::publish(const Change& change) {
    for (const Stream& stream : streams_) {
        auto boards = nlohmann::json::array();
        auto tasks = nlohmann::json::array();
        auto scope = nlohmann::json::array();
        for (const BoardId board : change.boards) {
            if (boards_.canSee(board, stream.person)) boards.push_back(board.text());
        }
        if (!boards.empty()) {
            for (const TaskId task : change.tasks) tasks.push_back(taskKey(task));
        }
        if (change.boardList) scope.push_back("boards");
        if (contains(change.inboxes, stream.person)) scope.push_back("inbox");
        if (change.timer == stream.person) scope.push_back("timer");
        if (boards.empty() && scope.empty()) continue;
        const nlohmann::json data = {{"boards", boards}, {"tasks", tasks}, {"scope", scope}};
        send(stream, "event: changed\ndata: " + data.dump() + "\n\n");
    }
}

void EventStream::ping() {
    for (const Stream& stream : streams_) send(stream, ": ping\n\n");
}

void EventStream::send(const Stream& stream, std::string_view text) {
    SoupServerMessage* const message = stream.message.get();
    soup_message_body_append(soup_server_message_get_response_body(message), SOUP_MEMORY_COPY, text.data(),
                             text.size());
    soup_server_message_unpause(message);
}

void EventStream::end(const Stream& stream) {
    soup_message_body_complete(soup_server_message_get_response_body(stream.message.get()));
    soup_server_message_unpause(stream.message.get());
}

}  // namespace parvela::service
