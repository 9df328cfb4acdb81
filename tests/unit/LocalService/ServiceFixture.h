#pragma once

#include "Domain/Random.h"
#include "Service.h"
#include "support/FakeClock.h"

#include <ParvelaKit/ParvelaAPI.h>
#include <ParvelaKit/Records.h>
#include <Platform/MainLoop.h>
#include <Platform/SoupTransport.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

namespace parvela::service::test {

/// Numbers that look random and come the same in every run.
class CountingRandom final : public Random {
public:
    std::uint32_t below(std::uint32_t bound) override {
        state_ = state_ * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<std::uint32_t>(state_ >> 33U) % bound;
    }

private:
    std::uint64_t state_ = 1;
};

using Headers = std::vector<HttpHeader>;

/// What a browser window sends and gets: keeps the session cookie and marks its requests as the web app does.
class Browser {
public:
    explicit Browser(std::string origin) : origin_(std::move(origin)) {}

    HttpResponse send(const std::string& method, const std::string& path, std::optional<std::string> body = {},
                      const Headers& more = {});
    HttpResponse get(const std::string& path) { return send("GET", path); }
    /// Sends `body` and expects success.
    nlohmann::json call(const std::string& method, const std::string& path,
                        const nlohmann::json& body = nlohmann::json::object());
    nlohmann::json fetch(const std::string& path);
    /// The status alone.
    int status(const std::string& method, const std::string& path,
               const nlohmann::json& body = nlohmann::json::object());

    std::string cookie;  ///< "name=value"; empty when signed out

private:
    std::string origin_;
    SoupTransport transport_;
};

/// A running service on free ports with a database in memory and a clock that the test drives. Its time zone is UTC and
/// its first day 2026-06-10.
class ServiceTest : public ::testing::Test {
protected:
    ServiceTest() { start({}); }

    /// Begins again with an empty workspace.
    void start(Service::Options options);

    /// A signed-in window of a new person; the first one is the owner.
    Browser join(const std::string& name, const std::string& timeZone = "UTC");
    /// The kit's client with a fresh token of that person.
    ParvelaAPI client(Browser& person, bool write = true);

    template <class T>
    Result<T, APIFailure> ask(const ParvelaAPI& api, const Endpoint& endpoint) {
        return runUntilDone(api.send<T>(endpoint));
    }
    /// The answer of a call that must succeed.
    template <class T>
    T answer(const ParvelaAPI& api, const Endpoint& endpoint) {
        auto result = ask<T>(api, endpoint);
        EXPECT_TRUE(result.has_value()) << endpoint.path.front() << ": " << failureText(result);
        return result ? std::move(*result) : T{};
    }
    template <class T>
    static std::string failureText(const Result<T, APIFailure>& result) {
        return result || !result.error().error() ? "" : result.error().error()->message();
    }

    /// A board with the lists "To do", "In progress" and "Done"; its id.
    static std::string makeBoard(Browser& person, const std::string& name,
                                 const nlohmann::json& more = nlohmann::json::object());
    static std::string listId(Browser& person, const std::string& board, const std::string& name);
    /// The new task's key.
    static std::string makeTask(Browser& person, const std::string& board, const std::string& title,
                                nlohmann::json more = nlohmann::json::object());

    parvela::test::FakeClock clock;
    CountingRandom random;
    std::unique_ptr<Service> service;
};

/// A connection to a site of the service that carries any bytes.
class RawConnection {
public:
    explicit RawConnection(const std::string& origin);
    RawConnection(const RawConnection&) = delete;
    RawConnection& operator=(const RawConnection&) = delete;
    ~RawConnection();

    /// Sends all of `bytes` and reads until everything received so far contains `until` or the peer ends the
    /// connection.
    const std::string& exchange(std::string_view bytes, std::string_view until);

private:
    int socket_;
    std::string received_;
};

}  // namespace parvela::service::test
