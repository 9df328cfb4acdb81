#include "ServiceFixture.h"

#include <ParvelaKit/Text.h>

#include <arpa/inet.h>
#include <fcntl.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

#include <glib.h>

namespace parvela::service::test {

HttpResponse Browser::send(const std::string& method, const std::string& path, std::optional<std::string> body,
                           const Headers& more) {
    HttpRequest request{
        .method = method, .url = Url::parse(origin_ + path).value(), .headers = more, .body = std::move(body)};
    if (method != "GET") request.headers.push_back({"X-Parvela-Web", "1"});
    if (!cookie.empty()) request.headers.push_back({"Cookie", cookie});
    auto answer = runUntilDone(transport_(std::move(request), std::stop_token()));
    if (!answer) throw std::runtime_error(method + " " + path + " got no answer");
    if (const auto set = answer->header("Set-Cookie")) {
        cookie = set->contains("Max-Age=0") ? std::string() : set->substr(0, set->find(';'));
    }
    return std::move(*answer);
}

nlohmann::json Browser::call(const std::string& method, const std::string& path, const nlohmann::json& body) {
    const HttpResponse response = send(method, path, body.dump());
    EXPECT_EQ(response.status, 200) << method << " " << path << ": " << response.body;
    return nlohmann::json::parse(response.body, nullptr, false);
}

nlohmann::json Browser::fetch(const std::string& path) {
    const HttpResponse response = get(path);
    EXPECT_EQ(response.status, 200) << path << ": " << response.body;
    return nlohmann::json::parse(response.body, nullptr, false);
}

int Browser::status(const std::string& method, const std::string& path, const nlohmann::json& body) {
    return send(method, path, method == "GET" ? std::nullopt : std::optional(body.dump())).status;
}

void ServiceTest::start(Service::Options options) {
    service.reset();
    options.database = ":memory:";
    options.webPort = options.apiPort = 0;
    options.passwordCost = PasswordCost::minimal;
    options.zone = Zone::named("UTC");
    options.openSignUp = true;
    service = std::make_unique<Service>(std::move(options), clock, random);
    const auto started = service->start();
    if (!started) throw std::runtime_error(started.error());
}

Browser ServiceTest::join(const std::string& name, const std::string& timeZone) {
    Browser browser(service->webOrigin());
    const std::string email = asciiLowercased(name.substr(0, name.find(' '))) + "@example.org";
    browser.call("POST", "/api/accounts",
                 {{"name", name}, {"email", email}, {"password", "correct horse"}, {"time_zone", timeZone}});
    return browser;
}

ParvelaAPI ServiceTest::client(Browser& person, bool write) {
    const auto issued = person.call("POST", "/api/tokens", {{"name", "test"}, {"write", write}});
    return {
        .baseURL = Url::parse(service->apiOrigin()).value(), .token = issued.at("token"), .transport = SoupTransport()};
}

std::string ServiceTest::makeBoard(Browser& person, const std::string& name, const nlohmann::json& more) {
    nlohmann::json body = more;
    body["name"] = name;
    return person.call("POST", "/api/boards", body).at("id");
}

std::string ServiceTest::listId(Browser& person, const std::string& board, const std::string& name) {
    for (const auto& list : person.fetch("/api/v1/boards/" + board).at("lists")) {
        if (list.at("name") == name) return list.at("id");
    }
    throw std::runtime_error("no list " + name);
}

std::string ServiceTest::makeTask(Browser& person, const std::string& board, const std::string& title,
                                  nlohmann::json more) {
    more["board"] = board;
    more["title"] = title;
    return person.call("POST", "/api/v1/tasks", more).at("key");
}

RawConnection::RawConnection(const std::string& origin) : socket_(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(*Url::parse(origin).value().port());
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        throw std::runtime_error("nothing listens at " + origin);
    }
    fcntl(socket_, F_SETFL, O_NONBLOCK);
}

RawConnection::~RawConnection() {
    close(socket_);
}

const std::string& RawConnection::exchange(std::string_view bytes, std::string_view until) {
    char buffer[4096];
    const gint64 deadline = g_get_monotonic_time() + 20 * G_USEC_PER_SEC;
    // The service answers on this same thread, so its turns and ours alternate.
    while (g_get_monotonic_time() < deadline) {
        g_main_context_iteration(nullptr, FALSE);
        if (const auto sent = send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL); sent > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(sent));
            if (bytes.empty() && until.empty()) shutdown(socket_, SHUT_WR);
        }
        const auto count = recv(socket_, buffer, sizeof buffer, 0);
        if (count > 0) received_.append(buffer, static_cast<std::size_t>(count));
        if (count == 0 || (count < 0 && errno != EAGAIN)) break;
        if (!until.empty() && received_.contains(until)) break;
    }
    return received_;
}

}  // namespace parvela::service::test
