#include "FaultServer.h"

#include <arpa/inet.h>
#include <array>
#include <cstdlib>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

namespace parvela::testing {

namespace {

enum class Ready { yes, no, stopped };

Ready waitFor(int socket, short events, int stop, std::chrono::milliseconds limit) {
    std::array<pollfd, 2> files{{{socket, events, 0}, {stop, POLLIN, 0}}};
    const int count = poll(files.data(), files.size(), static_cast<int>(limit.count()));
    if (files[1].revents != 0) return Ready::stopped;
    return count > 0 ? Ready::yes : Ready::no;
}

constexpr std::chrono::hours forEver{1};

/// The next request, or an empty text when the client is gone.
std::string readRequest(int socket, int stop) {
    std::string request;
    std::size_t wanted = std::string::npos;
    std::array<char, 65536> buffer{};
    while (request.size() < wanted) {
        if (waitFor(socket, POLLIN, stop, forEver) != Ready::yes) return {};
        const ssize_t count = recv(socket, buffer.data(), buffer.size(), 0);
        if (count <= 0) return {};
        request.append(buffer.data(), static_cast<std::size_t>(count));
        if (request.front() < 'A' || request.front() > 'Z') return {};  // such as a TLS handshake
        const std::size_t head = request.find("\r\n\r\n");
        if (wanted == std::string::npos && head != std::string::npos) {
            const std::size_t length = request.find("Content-Length: ");
            wanted = head + 4 + (length < head ? std::strtoul(request.c_str() + length + 16, nullptr, 10) : 0);
        }
    }
    return request;
}

}  // namespace

bool FaultServer::Peer::send(std::string_view bytes) {
    while (!bytes.empty()) {
        if (waitFor(socket_, POLLOUT, stop_, forEver) != Ready::yes) return false;
        const ssize_t count = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count < 0 && errno == EAGAIN) continue;
        if (count <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

bool FaultServer::Peer::waitForClose(std::chrono::milliseconds limit) {
    return waitFor(socket_, POLLRDHUP | POLLHUP, stop_, limit) == Ready::yes;
}

FaultServer::FaultServer() : listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)), stop_(eventfd(0, EFD_CLOEXEC)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (bind(listener_, generic, size) != 0 || listen(listener_, 16) != 0 ||
        getsockname(listener_, generic, &size) != 0) {
        throw std::runtime_error("no socket for the fault server");
    }
    port_ = ntohs(address.sin_port);
    acceptor_ = std::thread([this] { accept(); });
}

FaultServer::~FaultServer() {
    const std::uint64_t one = 1;
    if (write(stop_, &one, sizeof one) != sizeof one) std::abort();
    acceptor_.join();
    for (std::thread& worker : workers_) worker.join();
    close(listener_);
    close(stop_);
}

void FaultServer::keepAlive(const std::string& path, std::string bytes) {
    keptAlive_[path] = [bytes = std::move(bytes)](Peer& peer) { peer.send(bytes); };
}

std::vector<std::string> FaultServer::requests() const {
    const std::scoped_lock lock(mutex_);
    return requests_;
}

void FaultServer::accept() {
    while (waitFor(listener_, POLLIN, stop_, forEver) == Ready::yes) {
        const int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket < 0) continue;
        ++connections_;
        workers_.emplace_back([this, socket] {
            serve(socket);
            close(socket);
        });
    }
}

void FaultServer::serve(int socket) {
    for (;;) {
        const std::string request = readRequest(socket, stop_);
        if (request.empty()) return;
        {
            const std::scoped_lock lock(mutex_);
            requests_.push_back(request);
        }
        const std::size_t start = request.find(' ') + 1;
        const std::string path = request.substr(start, request.find(' ', start) - start);
        Peer peer(socket, stop_);
        if (const auto kept = keptAlive_.find(path); kept != keptAlive_.end()) {
            kept->second(peer);
            continue;
        }
        if (const auto answer = answers_.find(path); answer != answers_.end()) answer->second(peer);
        return;
    }
}

}  // namespace parvela::testing
