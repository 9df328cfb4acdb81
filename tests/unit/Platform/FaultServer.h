#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace parvela::testing {

/// An HTTP peer that misbehaves on demand: what it writes for a path is up to the test, byte for byte. Loopback, own
/// threads.
class FaultServer {
public:
    /// One request's connection, as the test's answer sees it.
    class Peer {
    public:
        Peer(int socket, int stop) : socket_(socket), stop_(stop) {}

        /// False once the client or the server is gone.
        bool send(std::string_view bytes);
        /// Waits without a word; true when the client closed, false when the time is over or the server ends.
        bool waitForClose(std::chrono::milliseconds limit = std::chrono::hours{1});

    private:
        int socket_;
        int stop_;
    };

    using Answer = std::function<void(Peer&)>;

    FaultServer();
    ~FaultServer();

    /// Before the first request. An answer that returns closes its connection, unless it is `keepAlive`.
    void on(const std::string& path, Answer answer) { answers_[path] = std::move(answer); }
    /// A fixed answer that leaves the connection open for the next request.
    void keepAlive(const std::string& path, std::string bytes);

    std::uint16_t port() const { return port_; }
    std::string url(const std::string& path) const { return "http://127.0.0.1:" + std::to_string(port_) + path; }

    int connections() const { return connections_; }
    /// Head and body of each request so far.
    std::vector<std::string> requests() const;

private:
    void accept();
    void serve(int socket);

    std::map<std::string, Answer> answers_, keptAlive_;
    std::uint16_t port_ = 0;
    int listener_ = -1;
    /// Readable once the server ends.
    int stop_ = -1;
    std::atomic<int> connections_ = 0;
    mutable std::mutex mutex_;
    std::vector<std::string> requests_;
    std::vector<std::thread> workers_;
    std::thread acceptor_;
};

}  // namespace parvela::testing
