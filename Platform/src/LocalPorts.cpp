#include <ParvelaKit/ServerConfig.h>
#include <Platform/LocalPorts.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <unistd.h>

namespace parvela {

namespace {

/// Those that are reached from this machine by "localhost", as the kernel writes them.
constexpr std::array<std::string_view, 5> addresses = {"00000000", "0100007F", "00000000000000000000000000000000",
                                                       "00000000000000000000000001000000",
                                                       "0000000000000000FFFF00000100007F"};
constexpr std::string_view listening = "0A";

/// One line of /proc/net/tcp.
bool isOfAnotherUser(const std::string& line, int port) {
    std::istringstream fields(line);
    std::string number, local, remote, state, queues, timer, retransmissions;
    uid_t user = 0;
    if (!(fields >> number >> local >> remote >> state >> queues >> timer >> retransmissions >> user)) return false;
    const auto colon = local.find(':');
    if (colon == std::string::npos || state != listening || user == getuid()) return false;
    int localPort = 0;
    std::istringstream(local.substr(colon + 1)) >> std::hex >> localPort;
    return localPort == port &&
           std::ranges::find(addresses, std::string_view(local).substr(0, colon)) != addresses.end();
}

}  // namespace

std::optional<int> LocalPorts::takenByAnotherUser() {
    const ServerConfig& local = ServerConfig::local();
    for (const int port : {*local.appURL.port(), *local.apiURL.port()}) {
        for (const char* const table : {"/proc/net/tcp", "/proc/net/tcp6"}) {
            std::ifstream lines(table);
            for (std::string line; std::getline(lines, line);) {
                if (isOfAnotherUser(line, port)) return port;
            }
        }
    }
    return std::nullopt;
}

}  // namespace parvela
