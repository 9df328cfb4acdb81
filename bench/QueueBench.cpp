// Sending 10,000 queued lines: how long the thread that runs the user interface is kept busy between two answers.
//
//     QueueBench [LINES]

#include <ParvelaKit/Json/Encoder.h>
#include <ParvelaKit/OfflineQueue.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <string>
#include <vector>

namespace parvela {
namespace {

using Stopwatch = std::chrono::steady_clock;

class StandingClock final : public Clock {
public:
    Instant now() const override { return Instant(std::chrono::milliseconds(1'781'222'400'000)); }
    CivilDate today() const override { return {2026, 6, 12}; }
    Instant moment(CivilDate day, std::int64_t minutesAfterMidnight) const override {
        return std::chrono::sys_days(std::chrono::days(day.dayNumber())) + std::chrono::minutes(minutesAfterMidnight);
    }
};

/// A service whose answers arrive one turn after the requests, and a main loop that measures its turns.
class Loop {
public:
    using Outcome = Result<HttpResponse, TransportError>;

    Transport transport() {
        return [this](HttpRequest, std::stop_token) { return perform(this); };
    }

    bool isOffline = false;

    /// Delivers answers until none is asked for; the milliseconds that each took.
    std::vector<double> run() {
        std::vector<double> turns;
        while (!waiting_.empty()) {
            const Deferred<Outcome> answer = waiting_.front();
            waiting_.pop_front();
            const auto start = Stopwatch::now();
            if (isOffline) {
                answer.resolve(Failure(TransportError::unreachable));
            } else {
                answer.resolve(HttpResponse{.status = 201, .body = created_});
            }
            turns.push_back(std::chrono::duration<double, std::milli>(Stopwatch::now() - start).count());
        }
        return turns;
    }

private:
    static Task<Outcome> perform(Loop* loop) {
        const Deferred<Outcome> answer;
        loop->waiting_.push_back(answer);
        Outcome outcome = co_await answer;
        co_return outcome;
    }

    std::deque<Deferred<Outcome>> waiting_;
    std::string created_ = json::encode(TaskSummary{.key = "TSK-1"});
};

Task<void> sleepForEver(std::chrono::milliseconds, std::stop_token) {
    const Deferred<bool> never;
    const bool woken = co_await never;
    (void)woken;
}

int measure(int lines) {
    std::string folder = (std::filesystem::temp_directory_path() / "parvela-queue-XXXXXX").string();
    if (!::mkdtemp(folder.data())) return 1;
    StandingClock clock;
    Loop loop;
    OfflineQueue queue({.file = std::filesystem::path(folder) / "queue.db",
                        .clock = &clock,
                        .random = [] { return 0.5; },
                        .sleep = sleepForEver});
    const ParvelaAPI api{*Url::parse("https://x.example"), "tk_1", loop.transport()};

    loop.isOffline = true;
    const auto start = Stopwatch::now();
    for (int i = 0; i < lines; ++i) {
        const std::string line = "Write brief " + std::to_string(i) + " tomorrow !high @Robin";
        QuickAddSubmission submission{.line = line, .board = "b1", .today = clock.today()};
        queue.submit(std::move(submission), "Work", api).detach();
        loop.run();
    }
    const auto kept = Stopwatch::now();

    loop.isOffline = false;
    queue.setClient(api);
    std::vector<double> turns = loop.run();
    const auto sent = Stopwatch::now();
    std::filesystem::remove_all(folder);

    const auto left = queue.status().get().waiting;
    if (left != 0 || turns.size() != static_cast<std::size_t>(lines)) {
        std::fprintf(stderr, "%zu lines are left\n", left);
        return 1;
    }
    std::ranges::sort(turns);
    const auto seconds = [](auto time) { return std::chrono::duration<double>(time).count(); };
    std::printf("%d lines kept in %.1f s, sent in %.1f s\n", lines, seconds(kept - start), seconds(sent - kept));
    std::printf("main loop busy between answers: median %.2f ms, 99th percentile %.2f ms, longest %.2f ms\n",
                turns[turns.size() / 2], turns[turns.size() * 99 / 100], turns.back());
    return 0;
}

}  // namespace
}  // namespace parvela

int main(int argc, char** argv) {
    const int lines = argc > 1 ? std::atoi(argv[1]) : 10'000;
    return lines > 0 ? parvela::measure(lines) : 2;
}
