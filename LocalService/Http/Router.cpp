#include "Http/Router.h"

#include <algorithm>

namespace parvela::service {

namespace {

std::optional<std::vector<std::string>> match(const std::vector<std::string>& pattern,
                                              const std::vector<std::string>& segments) {
    if (pattern.size() != segments.size()) return {};
    std::vector<std::string> arguments;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (pattern[i] == "{}") {
            arguments.push_back(segments[i]);
        } else if (pattern[i] != segments[i]) {
            return {};
        }
    }
    return arguments;
}

}  // namespace

void Router::add(std::string_view method, std::string_view pattern, Access access, Handler handler) {
    Route route{std::string(method), {}, access, std::move(handler)};
    while (!pattern.empty()) {
        pattern.remove_prefix(1);  // the slash
        const auto end = std::min(pattern.find('/'), pattern.size());
        route.pattern.emplace_back(pattern.substr(0, end));
        pattern.remove_prefix(end);
    }
    routes_.push_back(std::move(route));
}

Result<Router::Match, HttpError> Router::find(const Request& request) const {
    const std::string method = request.method == "HEAD" ? "GET" : request.method;
    std::string allowed;
    for (const Route& route : routes_) {
        auto arguments = match(route.pattern, request.segments);
        if (!arguments) continue;
        if (route.method == method) return Match{&route.handler, route.access, std::move(*arguments)};
        if (!allowed.contains(route.method)) allowed += (allowed.empty() ? "" : ", ") + route.method;
    }
    if (allowed.empty()) return Failure(HttpError::notFound());
    HttpError error{405, "This address doesn't take " + request.method + " requests."};
    error.headers.emplace_back("Allow", allowed);
    return Failure(error);
}

}  // namespace parvela::service
