#include "support/FakeClock.h"
#include "support/FakeSleep.h"
#include "support/FakeTransport.h"
#include "support/TemporaryFolder.h"

#include <ParvelaKit/Json/Decoder.h>
#include <ParvelaKit/Json/Encoder.h>
#include <ParvelaKit/OfflineQueue.h>

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sys/file.h>
#include <unistd.h>

#include <sqlite3.h>

namespace parvela {
namespace {

using namespace std::chrono_literals;
using test::FakeTransport;

constexpr const char* createTask = "POST /api/v1/tasks";

class OfflineQueueTest : public testing::Test {
protected:
    std::filesystem::path file() const { return folder_.path() / "state" / "queue.db"; }

    OfflineQueue& start() {
        queue_.reset();
        queue_ = std::make_unique<OfflineQueue>(OfflineQueue::Environment{
            .file = file(), .clock = &clock_, .random = [this] { return random_; }, .sleep = sleep_.function()});
        return *queue_;
    }

    ParvelaAPI client(std::string_view site = "https://x.example") const {
        return {*Url::parse(site), "tk_1", network_.transport()};
    }

    Task<Result<QuickAddReceipt, QuickAddFailure>> submit(std::string line, std::stop_token stop = {}) {
        return queue_->submit({.line = std::move(line), .board = "b1", .today = clock_.today()}, "Work", client(),
                              std::move(stop));
    }

    /// What became of a line whose sending ends at once.
    Result<QuickAddReceipt, QuickAddFailure> submitted(std::string line) {
        auto task = submit(std::move(line));
        EXPECT_TRUE(task.done());
        return std::move(task).result();
    }

    /// Submits lines while there is no connection.
    void submitOffline(std::initializer_list<const char*> lines) {
        for (const char* line : lines) {
            network_.fail(createTask, TransportError::unreachable);
            const auto receipt = submitted(line);
            ASSERT_TRUE(receipt) << receipt.error().message();
            EXPECT_EQ(receipt->note, "Saved. It will be added when you are back online.");
        }
    }

    void willCreate(int tasks = 1) {
        for (int i = 0; i < tasks; ++i) network_.answer(createTask, 201, json::encode(TaskSummary{.key = "TSK-1"}));
    }
    void willRefuse(int status, std::string_view message, std::vector<HttpHeader> headers = {}) {
        network_.answer(createTask, status, R"({"error":{"message":")" + std::string(message) + R"("}})", headers);
    }

    /// "2 waiting, 1 failed" in one word each.
    std::string counts() const {
        const OfflineQueueStatus status = queue_->status().get();
        return std::to_string(status.waiting) + "w" + std::to_string(status.sending) + "s" +
               std::to_string(status.failed) + "f";
    }

    std::vector<std::string> sentTitles(std::size_t from = 0) const {
        std::vector<std::string> titles;
        for (std::size_t i = from; i < network_.requests().size(); ++i) {
            titles.push_back(json::decode<NewTask>(*network_.requests()[i].body)->title);
        }
        return titles;
    }

    void wakeAfter(std::chrono::milliseconds time) {
        clock_.advance(time);
        sleep_.wakeAll();
    }

    test::TemporaryFolder folder_;
    test::FakeClock clock_;
    test::FakeSleep sleep_;
    FakeTransport network_;
    double random_ = 0;
    std::unique_ptr<OfflineQueue> queue_;
};

TEST_F(OfflineQueueTest, sendsAtOnceWhatCanBeSent) {
    start();
    willCreate();
    const auto receipt = submitted("Call Sam every monday");
    ASSERT_TRUE(receipt);
    EXPECT_EQ(receipt->task->key, "TSK-1");
    EXPECT_EQ(receipt->note, "Repeat rules can't be set from quick add \u2014 set the repeat in Parvela.");
    EXPECT_EQ(counts(), "0w0s0f");

    EXPECT_TRUE(submitted("tomorrow").error().isEmptyTitle());
    EXPECT_EQ(network_.requests().size(), 1U);
}

TEST_F(OfflineQueueTest, aLineIsOnDiskBeforeItsFirstAttemptEnds) {
    start();
    const auto answer = network_.hold(createTask);
    auto task = submit("Write brief");
    ASSERT_FALSE(task.done());
    EXPECT_EQ(counts(), "0w1s0f");
    ASSERT_EQ(queue_->lines(10).size(), 1U);
    EXPECT_EQ(queue_->lines(10)[0].state, QueuedLine::State::sending);
    EXPECT_FALSE(queue_->discard(queue_->lines(10)[0].id)) << "what is being sent cannot be taken back";
    answer.resolve(Failure(TransportError::cancelled));
    ASSERT_TRUE(task.done());
    EXPECT_EQ(counts(), "0w1s0f") << "still on disk while its author learns of it";
    wakeAfter(0ms);
    EXPECT_EQ(counts(), "0w0s0f") << "cancelling takes the line back";
}

TEST_F(OfflineQueueTest, keepsOnFirstTryOnlyWhatFoundNoService) {
    start();
    const struct {
        int status;  ///< 0 for a failed transfer
        TransportError transfer;
        const char* kept;
    } cases[] = {
        {0, TransportError::unreachable, "1w0s0f"},
        {0, TransportError::timedOut, "1w0s0f"},
        {0, TransportError::invalidResponse, "0w0s0f"},
        {0, TransportError::badURL, "0w0s0f"},
        {500, {}, "0w0s0f"},
        {429, {}, "0w0s0f"},
        {401, {}, "0w0s0f"},
        {422, {}, "0w0s0f"},
    };
    for (const auto& test : cases) {
        test.status == 0 ? network_.fail(createTask, test.transfer) : willRefuse(test.status, "");
        const bool kept = submitted("Write brief").has_value();
        if (!kept) wakeAfter(0ms);
        EXPECT_EQ(counts(), test.kept) << test.status;
        EXPECT_EQ(kept, counts() == "1w0s0f");
        for (const QueuedLine& line : queue_->lines(9)) EXPECT_TRUE(queue_->discard(line.id));
    }
}

TEST_F(OfflineQueueTest, keepsLinesAcrossARestartAndSendsThemAsTheyWereMeant) {
    start();
    const Instant typed = clock_.now();
    submitOffline({"Write brief tomorrow !high @Robin", "Fix \"menu\" \U0001F44D"});
    clock_.advance(72h);
    start();
    EXPECT_EQ(counts(), "2w0s0f");
    const QueuedLine expected{.id = 1,
                              .line = "Write brief tomorrow !high @Robin",
                              .boardId = "b1",
                              .boardName = "Work",
                              .day = CivilDate{2026, 6, 10},
                              .createdAt = typed,
                              .attempts = 1,
                              .lastFailure = APIError::offline().message()};
    ASSERT_EQ(queue_->lines(1).size(), 1U);
    EXPECT_EQ(queue_->lines(1)[0], expected);

    willRefuse(422, "No one called robin.");
    willCreate(2);
    queue_->setClient(client());
    EXPECT_EQ(counts(), "0w0s0f");
    ASSERT_EQ(network_.requests().size(), 5U);
    const auto first = json::decode<NewTask>(*network_.requests()[2].body);
    EXPECT_EQ(first->dueDate, "2026-06-11") << "tomorrow is the day after the one it was typed on";
    EXPECT_EQ(first->assignees, std::vector<std::string>{"robin"});
    EXPECT_EQ(sentTitles(3), (std::vector<std::string>{"Write brief @Robin", "Fix \"menu\" \U0001F44D"}));
}

TEST_F(OfflineQueueTest, waitsLongerAfterEveryOutage) {
    const std::pair<double, std::array<std::chrono::milliseconds, 8>> cases[] = {
        {0.0, {10s, 20s, 40s, 80s, 160s, 300s, 300s, 300s}},
        {1.0, {5s, 10s, 20s, 40s, 80s, 150s, 150s, 150s}},
    };
    for (const auto& [random, pauses] : cases) {
        random_ = random;
        start().setClient(client());
        submitOffline({"One"});
        for (const auto pause : pauses) {
            EXPECT_EQ(sleep_.durations(), std::vector{pause});
            EXPECT_EQ(queue_->status().get().nextTry, clock_.now() + pause);
            network_.fail(createTask, TransportError::unreachable);
            wakeAfter(pause);
        }
        willCreate();
        queue_->retryNow();
        EXPECT_EQ(counts(), "0w0s0f");
        EXPECT_TRUE(sleep_.durations().empty());
    }
}

TEST_F(OfflineQueueTest, obeysRetryAfterEvenAcrossARestart) {
    start();
    submitOffline({"One", "Two"});
    willRefuse(429, "", {{"Retry-After", "120"}});
    queue_->setClient(client());
    EXPECT_EQ(sleep_.durations(), std::vector<std::chrono::milliseconds>{120s});
    EXPECT_EQ(queue_->lines(1)[0].lastFailure, "Rate limited \u2014 try again in 120 seconds.");

    clock_.advance(60s);
    start().setClient(client());
    queue_->retryNow();
    EXPECT_EQ(network_.requests().size(), 3U) << "not before the service allows it";
    EXPECT_EQ(sleep_.durations(), std::vector<std::chrono::milliseconds>{60s});
    willCreate(2);
    wakeAfter(60s);
    EXPECT_EQ(counts(), "0w0s0f");
}

TEST_F(OfflineQueueTest, aClockSetBackDoesNotStopTheQueueForGood) {
    start();
    submitOffline({"One"});
    willRefuse(429, "", {{"Retry-After", "9223372036854775807"}});
    queue_->setClient(client());
    EXPECT_EQ(sleep_.durations(), std::vector<std::chrono::milliseconds>{24h});
    clock_.advance(-24h * 365);
    willCreate();
    start().setClient(client());
    EXPECT_EQ(counts(), "0w0s0f");
}

TEST_F(OfflineQueueTest, oneLineThatTheServiceFailsOverDoesNotHoldUpTheOthers) {
    start();
    submitOffline({"Poison", "Two", "Three"});
    willRefuse(500, "Boom.");
    willCreate(2);
    queue_->setClient(client());
    EXPECT_EQ(sentTitles(3), (std::vector<std::string>{"Poison", "Two", "Three"}));
    EXPECT_EQ(counts(), "1w0s0f");
    EXPECT_EQ(queue_->lines(1)[0].lastFailure, "Boom.");
    EXPECT_EQ(sleep_.durations(), std::vector<std::chrono::milliseconds>{10s});

    network_.fail(createTask, TransportError::timedOut);
    wakeAfter(10s);
    ASSERT_EQ(queue_->lines(1).size(), 1U);
    EXPECT_EQ(queue_->lines(1)[0].attempts, 3);
    EXPECT_EQ(queue_->lines(1)[0].lostAnswers, 1);
}

TEST_F(OfflineQueueTest, aServiceThatFailsOverEveryLineIsLeftAlone) {
    start();
    submitOffline({"1", "2", "3", "4", "5"});
    for (int i = 0; i < 3; ++i) willRefuse(503, "");
    queue_->setClient(client());
    EXPECT_EQ(network_.requests().size(), 8U);
    EXPECT_EQ(counts(), "5w0s0f");
    EXPECT_EQ(sleep_.durations().size(), 1U);
}

TEST_F(OfflineQueueTest, keepsRefusedLinesForTheUser) {
    start();
    submitOffline({"One", "Two", "Three"});
    willRefuse(404, "No such board.");
    willRefuse(403, "");
    willCreate();
    queue_->setClient(client());
    EXPECT_EQ(counts(), "0w0s2f");
    const auto refused = queue_->lines(10);
    EXPECT_EQ(refused[0].lastFailure, "No such board.");
    EXPECT_EQ(refused[1].lastFailure, APIError::forbidden("").message());
    queue_->retryNow();
    EXPECT_EQ(network_.requests().size(), 6U) << "a final failure is not tried again by itself";

    start().setClient(client());
    EXPECT_EQ(counts(), "0w0s2f");
    EXPECT_TRUE(queue_->discard(refused[0].id));
    EXPECT_FALSE(queue_->discard(refused[0].id));
    EXPECT_FALSE(queue_->retry(refused[0].id));
    willCreate();
    EXPECT_TRUE(queue_->retry(refused[1].id));
    EXPECT_EQ(counts(), "0w0s0f");
    EXPECT_EQ(sentTitles(6), std::vector<std::string>{"Two"});
}

TEST_F(OfflineQueueTest, aRevokedTokenEndsTheAttemptsUntilThereIsAnother) {
    start();
    submitOffline({"One", "Two"});
    willRefuse(401, "");
    queue_->setClient(client());
    EXPECT_EQ(counts(), "1w0s1f");
    EXPECT_EQ(queue_->status().get().nextTry, std::nullopt);
    willCreate(2);
    queue_->setClient(client());
    queue_->retryAllFailed();
    EXPECT_EQ(counts(), "0w0s0f");
}

TEST_F(OfflineQueueTest, linesGoOnlyWhereTheyWereTypedFor) {
    start();
    submitOffline({"One"});
    queue_->setClient(client("https://other.example"));
    EXPECT_EQ(counts(), "1w0s0f");
    EXPECT_EQ(network_.requests().size(), 1U);
    willCreate();
    queue_->setClient(client());
    EXPECT_EQ(counts(), "0w0s0f");
}

TEST_F(OfflineQueueTest, onlyTheHolderOfTheLockSends) {
    start();
    const int other = ::open((file().string() + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_EQ(::flock(other, LOCK_EX | LOCK_NB), 0);
    auto given = submit("Given up");
    for (int looks = 0; !given.done() && looks < 1000; ++looks) wakeAfter(50ms);
    EXPECT_EQ(std::move(given).result()->note, "Saved. It will be added later.");
    std::stop_source stop;
    auto takenBack = submit("Taken back", stop.get_token());
    stop.request_stop();
    ASSERT_TRUE(takenBack.done());
    EXPECT_TRUE(std::move(takenBack).result().error().message().empty());
    auto patient = submit("Patient");
    wakeAfter(50ms);
    EXPECT_FALSE(patient.done());
    EXPECT_EQ(counts(), "2w0s0f");
    EXPECT_TRUE(network_.requests().empty());

    ::close(other);
    willCreate(2);
    wakeAfter(50ms);
    ASSERT_TRUE(patient.done());
    const auto receipt = std::move(patient).result();
    ASSERT_TRUE(receipt && receipt->task);
    EXPECT_EQ(counts(), "1w0s0f");
    queue_->setClient(client());
    EXPECT_EQ(counts(), "0w0s0f");
}

TEST_F(OfflineQueueTest, destroyingTheQueueWhileSendingKeepsTheLine) {
    start();
    submitOffline({"One", "Two"});
    network_.hold(createTask);
    queue_->setClient(client());
    EXPECT_EQ(counts(), "1w1s0f");
    start();
    EXPECT_EQ(counts(), "2w0s0f");
    EXPECT_EQ(queue_->lines(1)[0].lostAnswers, 1);
}

TEST_F(OfflineQueueTest, aProgramThatEndsAfterARefusalLeavesNothingBehind) {
    start();
    willRefuse(422, "The title is too long.");
    EXPECT_EQ(submitted("One").error().message(), "The title is too long.");
    start();
    EXPECT_EQ(counts(), "0w0s0f");
}

TEST_F(OfflineQueueTest, doesNotKeepLinesWithoutEnd) {
    start();
    const auto trySubmitting = [this](std::size_t size) {
        network_.fail(createTask, TransportError::unreachable);
        return submitted(std::string(size, 'a'));
    };
    EXPECT_EQ(trySubmitting(OfflineQueue::longestKeptLine + 1).error(), QuickAddFailure::notKept(APIError::offline()));
    EXPECT_EQ(counts(), "0w0s0f");
    EXPECT_TRUE(trySubmitting(OfflineQueue::longestKeptLine));
    EXPECT_EQ(queue_->lines(1)[0].line.size(), OfflineQueue::longestKeptLine);
}

/// Another program's view of the database.
class OtherConnection {
public:
    explicit OtherConnection(const std::filesystem::path& file) { sqlite3_open(file.c_str(), &handle_); }
    ~OtherConnection() { sqlite3_close(handle_); }
    bool run(const char* sql) { return sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr) == SQLITE_OK; }

private:
    sqlite3* handle_ = nullptr;
};

TEST_F(OfflineQueueTest, writesAResultDownLaterWhenItCannotAtOnce) {
    start();
    submitOffline({"One", "Two"});
    const auto answer = network_.hold(createTask);
    queue_->setClient(client());
    OtherConnection other(file());
    ASSERT_TRUE(other.run("BEGIN IMMEDIATE"));
    answer.resolve(FakeTransport::ok(json::encode(TaskSummary{})));
    EXPECT_EQ(network_.requests().size(), 3U) << "nothing more is sent while results cannot be kept";
    EXPECT_EQ(sleep_.durations(), std::vector<std::chrono::milliseconds>{5s});

    ASSERT_TRUE(other.run("ROLLBACK"));
    willCreate();
    wakeAfter(5s);
    EXPECT_EQ(counts(), "0w0s0f");
    EXPECT_EQ(sentTitles(2), (std::vector<std::string>{"One", "Two"})) << "each once";
}

TEST_F(OfflineQueueTest, sendsWithoutKeepingWhenTheDiskRefuses) {
    start();
    OtherConnection other(file());
    ASSERT_TRUE(other.run("BEGIN IMMEDIATE"));
    network_.fail(createTask, TransportError::unreachable);
    EXPECT_EQ(submitted("One").error().message(),
              APIError::offline().message() + " The line could not be saved for later.")
        << "the caller must not believe that it was saved";
    willCreate();
    EXPECT_TRUE(submitted("Two")->task);
}

TEST_F(OfflineQueueTest, aFileThatCouldNotBeReadForAWhileHasLostNothing) {
    start();
    submitOffline({"One"});
    ASSERT_TRUE(OtherConnection(file()).run("ALTER TABLE lines RENAME TO hidden"));
    network_.fail(createTask, TransportError::unreachable);
    EXPECT_FALSE(submitted("Two"));
    EXPECT_EQ(counts(), "1w0s0f");
    ASSERT_TRUE(OtherConnection(file()).run("ALTER TABLE hidden RENAME TO lines"));

    queue_.reset();
    std::filesystem::rename(file(), folder_.path() / "aside");
    std::filesystem::create_directory(file());
    start();
    EXPECT_THAT(queue_->status().get().notice.value_or(""), testing::HasSubstr("can't be saved for later"));
    std::filesystem::remove(file());
    std::filesystem::rename(folder_.path() / "aside", file());
    submitOffline({"Three"});
    EXPECT_EQ(counts(), "2w0s0f");
    EXPECT_EQ(queue_->status().get().notice, std::nullopt);
}

TEST_F(OfflineQueueTest, setsADamagedFileAside) {
    const auto damage = [this](std::streamoff at, const std::string& bytes) {
        queue_.reset();
        std::fstream stream(file(), std::ios::in | std::ios::out | std::ios::binary);
        stream.seekp(at);
        stream << bytes;
    };
    const std::pair<std::streamoff, std::string> damages[] = {
        {0, "this is no database, not even nearly"},
        {4096, std::string(4096, '\x5a')},
    };
    for (const auto& [at, bytes] : damages) {
        clock_.advance(1s);
        start();
        submitOffline({"One"});
        damage(at, bytes);
        start();
        EXPECT_EQ(counts(), "0w0s0f");
        const auto notice = queue_->status().get().notice;
        ASSERT_TRUE(notice);
        EXPECT_THAT(*notice, testing::HasSubstr("was damaged. It was kept as \"" + file().string() + ".damaged-"));
        const auto from = notice->find('"') + 1;
        EXPECT_TRUE(std::filesystem::exists(notice->substr(from, notice->rfind('"') - from)));
        submitOffline({"Two"});
        EXPECT_EQ(counts(), "1w0s0f");
        EXPECT_TRUE(queue_->discard(queue_->lines(1)[0].id));
    }
}

TEST_F(OfflineQueueTest, leavesTheFileOfANewerVersionAlone) {
    start();
    submitOffline({"One"});
    queue_.reset();
    ASSERT_TRUE(OtherConnection(file()).run("PRAGMA user_version = 2"));
    start().setClient(client());
    EXPECT_THAT(queue_->status().get().notice.value_or(""), testing::HasSubstr("newer version"));
    EXPECT_EQ(counts(), "0w0s0f");
    willCreate();
    EXPECT_TRUE(submitted("Two")->task);
    network_.fail(createTask, TransportError::unreachable);
    EXPECT_FALSE(submitted("Three"));

    queue_.reset();
    ASSERT_TRUE(OtherConnection(file()).run("PRAGMA user_version = 1"));
    start();
    EXPECT_EQ(counts(), "1w0s0f");
}

TEST_F(OfflineQueueTest, worksWithoutAFolderToWriteTo) {
    std::ofstream(folder_.path() / "state") << "a file in the way";
    start().setClient(client());
    EXPECT_THAT(queue_->status().get().notice.value_or(""), testing::HasSubstr("can't be saved for later"));
    willCreate();
    EXPECT_TRUE(submitted("One")->task);
    EXPECT_TRUE(queue_->lines(5).empty());
    EXPECT_FALSE(queue_->retry(1));
}

TEST_F(OfflineQueueTest, keepsNothingThatItCouldNeverSend) {
    std::filesystem::create_directories(file().string() + ".lock");
    start();
    EXPECT_THAT(queue_->status().get().notice.value_or(""), testing::HasSubstr("can't be saved for later"));
    network_.fail(createTask, TransportError::unreachable);
    EXPECT_FALSE(submitted("One"));
}

}  // namespace
}  // namespace parvela
