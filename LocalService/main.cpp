#include "Service.h"

#include <ParvelaKit/BuildInfo.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <glib-unix.h>

using namespace parvela;
using namespace parvela::service;

namespace {

constexpr int wrongUse = 2;

class SystemClock final : public Clock {
public:
    Instant now() const override {
        return std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
    }
    CivilDate today() const override { return Zone::local().dayOf(now()); }
    Instant moment(CivilDate day, std::int64_t minutesAfterMidnight) const override {
        return Zone::local().momentOf(day, static_cast<int>(minutesAfterMidnight));
    }
};

/// Keeps a second service away from the same data for as long as it lives.
class FolderLock {
public:
    explicit FolderLock(const std::filesystem::path& folder)
        : file_(open((folder / "lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
        held_ = file_ >= 0 && flock(file_, LOCK_EX | LOCK_NB) == 0;
    }
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;
    ~FolderLock() {
        if (file_ >= 0) close(file_);
    }
    bool held() const noexcept { return held_; }

private:
    int file_;
    bool held_ = false;
};

int fail(const std::string& message) {
    fmt::print(stderr, "parvela-local-service: {}\n", message);
    return 1;
}

int run(const std::filesystem::path& folder, Service::Options options) {
    std::filesystem::create_directories(folder);
    // Only the person who runs the service may read it.
    if (chmod(folder.c_str(), 0700) != 0)
        return fail(fmt::format("The folder {} can't be made private.", folder.string()));
    const FolderLock lock(folder);
    if (!lock.held()) return fail(fmt::format("Another Parvela service uses the folder {}.", folder.string()));
    options.database = folder / "parvela.sqlite";

    const SystemClock clock;
    SystemRandom random;
    Service service(std::move(options), clock, random);
    if (const auto started = service.start(); !started) return fail(started.error());

    const std::unique_ptr<GMainLoop, decltype(&g_main_loop_unref)> loop(g_main_loop_new(nullptr, FALSE),
                                                                        g_main_loop_unref);
    const auto quit = [](gpointer running) -> gboolean {
        g_main_loop_quit(static_cast<GMainLoop*>(running));
        return G_SOURCE_CONTINUE;
    };
    g_unix_signal_add(SIGTERM, quit, loop.get());
    g_unix_signal_add(SIGINT, quit, loop.get());
    fmt::print("Parvela is running: {}\n", service.webOrigin());
    std::fflush(stdout);
    g_main_loop_run(loop.get());
    return 0;
}

int start(int argc, char** argv) {
    umask(0077);
    std::string folder = (std::filesystem::path(g_get_user_data_dir()) / "parvela-local-service").string();
    std::string assets;
    Service::Options options;
    CLI::App app{"A Parvela service for this machine: the web app and the API, with the data in one file.",
                 "parvela-local-service"};
    app.add_option("--data", folder, "Folder of the data")->capture_default_str();
    app.add_option("--web-port", options.webPort, "Port of the web app, 0 for any free one")->capture_default_str();
    app.add_option("--api-port", options.apiPort, "Port of the API site, 0 for any free one")->capture_default_str();
    app.add_flag("--demo", options.demo,
                 "Fill an empty workspace with examples; anybody may sign in as the demo person");
    app.add_flag("--open-sign-up", options.openSignUp, "Let people join without being added by the owner");
    app.add_option("--assets", assets, "Serve the web app from this folder instead of the built-in one")
        ->check(CLI::ExistingDirectory);
    app.add_option("--requests-per-minute", options.requestsPerMinute, "Most requests of one person in a minute")
        ->check(CLI::Range(1, 1'000'000))
        ->capture_default_str();
    app.set_version_flag("--version", fmt::format("Parvela {}", BuildInfo::version()), "Show the version and end");
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& wish) {
        return app.exit(wish);  // help or version
    } catch (const CLI::ParseError& error) {
        fail(fmt::format("{}\nSee “parvela-local-service --help”.", error.what()));
        return wrongUse;
    }
    if (!assets.empty()) options.assets = assets;
    return run(folder, std::move(options));
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return start(argc, argv);
    } catch (const std::exception& error) {
        return fail(error.what());
    }
}
