#include "LocalService.h"

#include "RunningProgram.h"

#include <ParvelaKit/ServerConfig.h>
#include <Platform/LocalPorts.h>
#include <Platform/MainLoop.h>
#include <Platform/SoupTransport.h>
#include <Platform/XdgPaths.h>

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include <fmt/format.h>

namespace parvela {

namespace {

using namespace std::chrono_literals;

constexpr auto startPatience = 20s;
constexpr auto pause = 50ms;

/// Any answer counts, an error status too.
bool answers(const Url& url) {
    HttpRequest request{.method = "GET", .url = url, .timeout = 5s};
    return runUntilDone(SoupTransport::shared()(std::move(request), {})).has_value();
}

bool isUp() {
    return answers(ServerConfig::local().apiURL) && answers(ServerConfig::local().appURL);
}

/// Starts the program as a process of its own session, not a child of this one. The descriptor reads the end of file
/// once the program is gone; negative when it could not be started.
int startDetached(const std::string& program, const std::vector<std::string>& arguments, const std::string& log) {
    int alive[2];
    if (pipe2(alive, O_CLOEXEC) != 0) return -1;
    std::vector<char*> argv{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    const int input = open("/dev/null", O_RDONLY | O_CLOEXEC);
    const int output = open(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0600);

    const pid_t middle = fork();
    if (middle == 0) {
        setsid();
        if (fork() != 0) _exit(0);
        dup2(input, STDIN_FILENO);
        dup2(output, STDOUT_FILENO);
        dup2(output, STDERR_FILENO);
        fcntl(alive[1], F_SETFD, 0);
        execv(program.c_str(), argv.data());
        _exit(127);
    }
    if (middle > 0) waitpid(middle, nullptr, 0);
    close(input);
    close(output);
    close(alive[1]);
    return alive[0];
}

bool hasEnded(int alive) {
    pollfd state{alive, POLLIN, 0};
    return poll(&state, 1, 0) > 0;
}

}  // namespace

std::optional<std::string> LocalService::ensureRunning(Workspace workspace) {
    if (const auto port = LocalPorts::takenByAnotherUser()) {
        return fmt::format("Port {} of this machine is taken by another user. {}", *port, LocalPorts::remedy);
    }
    if (isUp()) return std::nullopt;
    const auto folder = XdgPaths::current().state;
    if (const auto error = ensurePrivateFolder(folder)) {
        return fmt::format("The folder “{}” can't be made: {}.", folder.string(), error.message());
    }
    const std::string log = (folder / "local-service.log").string();
    std::vector<std::string> arguments;
    if (workspace == Workspace::demo) arguments.emplace_back("--demo");
    const int alive = startDetached(siblingProgram("parvela-local-service"), arguments, log);
    if (alive < 0) return "The Parvela service of this machine can't be started.";

    std::optional<std::string> problem;
    const auto deadline = std::chrono::steady_clock::now() + startPatience;
    while (!isUp()) {
        if (hasEnded(alive)) {
            problem = fmt::format("The Parvela service of this machine ended at once. “{}” says why.", log);
        } else if (std::chrono::steady_clock::now() >= deadline) {
            problem = fmt::format("The Parvela service of this machine does not answer. “{}” may say why.", log);
        }
        if (problem) break;
        runUntilDone(sleepFor(pause));
    }
    close(alive);
    return problem;
}

}  // namespace parvela
