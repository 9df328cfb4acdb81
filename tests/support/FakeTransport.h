#pragma once

#include <ParvelaKit/Transport.h>

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace parvela::test {

using TransportResult = Result<HttpResponse, TransportError>;

/// A network with scripted answers, which writes down every request. Routes are "METHOD /path", with or without the
/// query. At its end it cancels the requests that still wait.
class FakeTransport {
public:
    FakeTransport() = default;
    FakeTransport(const FakeTransport&) = delete;
    FakeTransport& operator=(const FakeTransport&) = delete;
    ~FakeTransport() {
        state_->closed = true;
        for (const auto& answer : std::exchange(state_->handed, {})) answer.resolve(Failure(TransportError::cancelled));
    }

    Transport transport() const {
        return [state = state_](HttpRequest request, std::stop_token stop) {
            return perform(state, std::move(request), std::move(stop));
        };
    }

    /// The next request of that route that has no earlier answer gets this one.
    void answer(const std::string& route, int status, std::string body = {}, std::vector<HttpHeader> headers = {}) {
        deliver(route, HttpResponse{status, std::move(headers), std::move(body)});
    }
    void fail(const std::string& route, TransportError error) { deliver(route, Failure(error)); }
    /// The next request of that route waits until the returned value is resolved or the request is cancelled.
    Deferred<TransportResult> hold(const std::string& route) {
        Deferred<TransportResult> pending;
        state_->answers[route].push_back(pending);
        return pending;
    }
    static TransportResult ok(std::string body) { return HttpResponse{200, {}, std::move(body)}; }

    const std::vector<HttpRequest>& requests() const { return state_->requests; }
    /// The routes asked for so far, with their queries, in order.
    std::vector<std::string> routes() const {
        std::vector<std::string> routes;
        for (const HttpRequest& request : requests()) routes.push_back(routeOf(request));
        return routes;
    }

private:
    struct State {
        std::map<std::string, std::deque<Deferred<TransportResult>>> answers;
        std::vector<HttpRequest> requests;
        std::vector<Deferred<TransportResult>> handed;  ///< the answers that requests got or wait for
        bool closed = false;
    };

    static std::string routeOf(const HttpRequest& request) {
        return request.method + " " + request.url.path() + (request.url.query() ? "?" + *request.url.query() : "");
    }

    void deliver(const std::string& route, TransportResult result) { hold(route).resolve(std::move(result)); }

    static Task<TransportResult> perform(std::shared_ptr<State> state, HttpRequest request, std::stop_token stop) {
        if (state->closed) co_return Failure(TransportError::cancelled);
        state->requests.push_back(request);
        auto* answers = &state->answers[routeOf(request)];
        if (answers->empty()) answers = &state->answers[request.method + " " + request.url.path()];
        if (answers->empty()) {
            ADD_FAILURE() << "No answer is scripted for " << routeOf(request);
            co_return Failure(TransportError::invalidResponse);
        }
        const auto answer = answers->front();
        answers->pop_front();
        state->handed.push_back(answer);
        const std::stop_callback cancel(stop, [answer] { answer.resolve(Failure(TransportError::cancelled)); });
        auto result = co_await answer;
        co_return result;
    }

    std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace parvela::test
