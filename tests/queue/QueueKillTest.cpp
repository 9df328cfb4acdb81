// Kills programs that submit and send queued lines, at random moments, and holds what the service got against what the
// users of those programs were told.

#include "support/TemporaryFolder.h"

#include <ParvelaKit/Json/Decoder.h>
#include <ParvelaKit/Json/Encoder.h>
#include <ParvelaKit/OfflineQueue.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <deque>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <sched.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace parvela {
namespace {

constexpr int kills = 1000;
constexpr int mostKills = 4 * kills;  // a busy machine lets few programs get to work before they are killed
constexpr std::size_t enoughLines = kills / 2;
constexpr std::size_t mostLines = 200'000;

/// What outlives the killed programs: the service's view, the users' view and the time.
struct World {
    struct Line {
        std::atomic<bool> seen;       ///< an attempt reached the network
        std::atomic<bool> confirmed;  ///< the user was told that it is saved or created
        std::atomic<bool> returned;   ///< the user was told that it failed, and has it back
        std::atomic<int> created;     ///< tasks that the service made of it
        std::atomic<int> lost;        ///< of those, how often the answer was lost
        std::atomic<int> answering;   ///< answers on their way to the queue, those of killed programs included
        std::atomic<bool> settled;    ///< the queue has the answer and went on
    };

    std::atomic<std::int64_t> now;
    std::atomic<std::size_t> lines;
    std::atomic<int> repeatedAfterAnswer;
    std::atomic<int> sentSideBySide;
    struct Sender {
        std::atomic<pid_t> process;
        std::atomic<int> requests;
    };
    Sender senders[2];
    Line line[mostLines];
};

class WorldClock final : public Clock {
public:
    explicit WorldClock(const World& world) : world_(world) {}
    Instant now() const override { return Instant(std::chrono::milliseconds(world_.now)); }
    CivilDate today() const override { return {2026, 6, 12}; }
    Instant moment(CivilDate day, std::int64_t minutesAfterMidnight) const override {
        return std::chrono::sys_days(std::chrono::days(day.dayNumber())) + std::chrono::minutes(minutesAfterMidnight);
    }

private:
    const World& world_;
};

bool isRunning(pid_t process) {
    std::ifstream stat("/proc/" + std::to_string(process) + "/stat");
    std::string text;
    std::getline(stat, text);
    const auto state = text.rfind(") ");
    return state != std::string::npos && text[state + 2] != 'Z' && text[state + 2] != 'X';
}

/// One program: a queue, its user and its main loop. Runs until it is killed.
class Program {
public:
    enum class Service { failing, healthy };

    Program(World& world, std::filesystem::path file, std::uint64_t seed, std::size_t slot, Service service)
        : world_(world),
          random_(seed),
          clock_(world),
          service_(service),
          self_(world.senders[slot]),
          other_(world.senders[1 - slot]),
          queue_({.file = std::move(file),
                  .clock = &clock_,
                  .random = [this] { return chance(); },
                  .sleep = [this](std::chrono::milliseconds duration,
                                  std::stop_token stop) { return sleep(this, duration, std::move(stop)); }}) {
        self_.requests = 0;
        self_.process = ::getpid();
        queue_.setClient(client());
    }

    [[noreturn]] void runUntilKilled() {
        for (;;) {
            const double dice = chance();
            if (dice < 0.3 && world_.lines < mostLines) submit(this).detach();
            if (dice > 0.97) queue_.retryAllFailed();
            if (dice < 0.5) answerOne();
            if (dice > 0.6 && dice < 0.8) wakeOne();
        }
    }

    /// Sends everything that is left. False when the queue does not get empty.
    bool drain() {
        queue_.retryAllFailed();
        for (int turn = 0; turn < 1'000'000; ++turn) {
            const auto status = queue_.status().get();
            if (status.waiting + status.sending + status.failed == 0) return true;
            if (!answerOne()) wakeOne();
        }
        return false;
    }

    const OfflineQueue& queue() const { return queue_; }

private:
    using Outcome = Result<HttpResponse, TransportError>;

    struct Request {
        std::size_t line;
        Deferred<Outcome> answer;
    };

    double chance() { return std::uniform_real_distribution<double>(0, 1)(random_); }

    ParvelaAPI client() {
        return {*Url::parse("https://x.example"), "tk_1",
                [this](HttpRequest request, std::stop_token) { return perform(this, std::move(request)); }};
    }

    static Task<void> submit(Program* program) {
        const std::size_t number = program->world_.lines++;
        World::Line& line = program->world_.line[number];
        QuickAddSubmission submission{.line = std::to_string(number), .board = "b1", .today = program->clock_.today()};
        auto call = program->queue_.submit(std::move(submission), "Work", program->client());
        const auto receipt = co_await call;
        (receipt ? line.confirmed : line.returned) = true;
    }

    static Task<Outcome> perform(Program* program, HttpRequest request) {
        program->checkAlone();
        ++program->self_.requests;
        const std::size_t number = std::stoul(json::decode<NewTask>(*request.body)->title);
        program->world_.line[number].seen = true;
        Deferred<Outcome> answer;
        program->requests_.push_back({number, answer});
        Outcome outcome = co_await answer;
        co_return outcome;
    }

    /// No other living program has a request on its way. One that is just being killed still counts as living for a
    /// moment after the system took its locks away.
    void checkAlone() {
        for (int look = 0; other_.requests > 0 && isRunning(other_.process); ++look) {
            if (look == 1000) {
                ++world_.sentSideBySide;
                return;
            }
            ::sched_yield();
        }
    }

    bool answerOne() {
        if (requests_.empty()) return false;
        const auto at = requests_.begin() + static_cast<std::ptrdiff_t>(random_() % requests_.size());
        const Request request = *at;
        requests_.erase(at);
        const double dice = service_ == Service::healthy ? 1 : chance();
        --self_.requests;
        if (dice < 0.1) {
            request.answer.resolve(Failure(TransportError::unreachable));
        } else if (dice < 0.2) {
            request.answer.resolve(HttpResponse{.status = 503});
        } else if (dice < 0.25) {
            request.answer.resolve(HttpResponse{.status = 429, .headers = {{"Retry-After", "7"}}});
        } else if (dice < 0.3) {
            request.answer.resolve(HttpResponse{.status = 403});
        } else {
            create(request, dice < 0.4);
        }
        return true;
    }

    void create(const Request& request, bool losesAnswer) {
        World::Line& line = world_.line[request.line];
        if (line.settled) ++world_.repeatedAfterAnswer;
        // Whatever moment this program is killed at, a task that is counted has its answer accounted for.
        if (losesAnswer) {
            ++line.lost;
            ++line.created;
            request.answer.resolve(Failure(TransportError::timedOut));
            return;
        }
        ++line.answering;
        ++line.created;
        request.answer.resolve(HttpResponse{.status = 201, .body = json::encode(TaskSummary{})});
        line.settled = true;
        --line.answering;
    }

    static Task<void> sleep(Program* program, std::chrono::milliseconds duration, std::stop_token stop) {
        const Deferred<bool> woken;
        program->sleepers_.push_back({program->clock_.now() + duration, woken});
        const std::stop_callback interrupt(stop, [woken] { woken.resolve(false); });
        const bool rested = co_await woken;
        (void)rested;
    }

    void wakeOne() {
        if (sleepers_.empty()) return;
        const auto [until, woken] = sleepers_.front();
        sleepers_.pop_front();
        if (woken.resolved()) return;
        const std::int64_t wanted = until.time_since_epoch().count();
        std::int64_t now = world_.now;
        while (now < wanted && !world_.now.compare_exchange_weak(now, wanted)) {
        }
        woken.resolve(true);
    }

    World& world_;
    std::mt19937_64 random_;
    WorldClock clock_;
    Service service_;
    World::Sender& self_;
    World::Sender& other_;
    std::vector<Request> requests_;
    std::deque<std::pair<Instant, Deferred<bool>>> sleepers_;
    OfflineQueue queue_;
};

/// The system kills this process, as by "kill -9", after so much time. Less than a program waits for a database that
/// another one holds: a line that can't be kept is promised to nobody.
void killMyselfAfter(std::chrono::microseconds time) {
    sigevent event{};
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = SIGKILL;
    timer_t timer{};
    itimerspec when{};
    when.it_value.tv_nsec = time.count() * 1000;
    if (::timer_create(CLOCK_MONOTONIC, &event, &timer) != 0 || ::timer_settime(timer, 0, &when, nullptr) != 0)
        ::_exit(3);
}

TEST(QueueKill, losesNoLineAndRepeatsOnlyThoseWhoseAnswerWasLost) {
    void* const memory = ::mmap(nullptr, sizeof(World), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    World& world = *new (memory) World{};
    world.now = 1'781'222'400'000;

    const test::TemporaryFolder folder;
    const std::filesystem::path file = folder.path() / "queue.db";

    std::mt19937_64 random(20260612);
    const auto start = [&](std::size_t slot) {
        const std::uint64_t seed = random();
        const std::chrono::microseconds life(500 + static_cast<std::int64_t>(random() % 60'000));
        const pid_t child = ::fork();
        if (child != 0) return child;
        killMyselfAfter(life);
        Program(world, file, seed, slot, Program::Service::failing).runUntilKilled();
    };
    const auto bury = [&](pid_t child, std::size_t slot) {
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << "a program ended by itself: " << status;
        world.senders[slot].requests = 0;
    };
    int killed = 0;
    while (killed < kills || (world.lines < enoughLines && killed < mostKills)) {
        const bool inPairs = killed % 5 == 0;
        const pid_t first = start(0);
        const pid_t second = inPairs ? start(1) : 0;
        bury(first, 0);
        if (inPairs) bury(second, 1);
        killed += inPairs ? 2 : 1;
    }

    Program last(world, file, 1, 0, Program::Service::healthy);
    EXPECT_TRUE(last.drain());
    EXPECT_EQ(last.queue().status().get().notice, std::nullopt);

    int lines = 0;
    int twice = 0;
    int lostAnswers = 0;
    for (std::size_t i = 0; i < world.lines; ++i) {
        const World::Line& line = world.line[i];
        lines += line.seen || line.confirmed ? 1 : 0;
        // An answer that was on its way when its program was killed did not arrive.
        const int lost = line.lost + line.answering;
        lostAnswers += lost;
        if (line.created > 1) twice += line.created - 1;
        if ((line.seen || line.confirmed) && !line.returned) EXPECT_GE(line.created, 1) << "line " << i << " is lost";
        EXPECT_LE(line.created, 1 + lost) << "line " << i << " was added again although its answer arrived";
    }
    EXPECT_EQ(world.repeatedAfterAnswer, 0);
    EXPECT_EQ(world.sentSideBySide, 0);
    EXPECT_GE(world.lines, enoughLines) << "the programs hardly got to work";
    std::printf("%d kills, %d lines, %d lost answers, %d tasks added again for them\n", killed, lines, lostAnswers,
                twice);
}

}  // namespace
}  // namespace parvela
