// The local service's lists over growing tables: what is due today, a person's tasks, the first page of everything,
// search and the counts of a board. Times must follow the answer, which has the same size in every table, not the
// table.
//
// Prints the query plans first. Each table has 20 boards and 8 people; one task in a thousand is open and due by today,
// up to 200 of them, so that answers are alike.

#include "Domain/Secrets.h"
#include "Domain/Stores.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <unistd.h>

#include <benchmark/benchmark.h>
#include <fmt/format.h>

namespace parvela::service {
namespace {

constexpr std::int64_t boardCount = 20;
constexpr std::int64_t personCount = 8;
constexpr std::int64_t dueCount = 200;
constexpr int listLimit = 1001;

class FixedClock final : public Clock {
public:
    Instant now() const override { return Instant(today().dayNumber() * std::chrono::hours(24)); }
    CivilDate today() const override { return {2026, 6, 10}; }
    Instant moment(CivilDate day, std::int64_t minutes) const override {
        return Instant(day.dayNumber() * std::chrono::hours(24)) + std::chrono::minutes(minutes);
    }
};

/// A database with so many tasks, in a file of its own that goes with it.
class Workspace {
public:
    explicit Workspace(std::int64_t tasks)
        : file_(std::filesystem::temp_directory_path() / fmt::format("parvela-bench-{}-{}.sqlite", getpid(), tasks)),
          database_(file_),
          stores_(database_, clock_, random_) {
        database_.runScript("PRAGMA synchronous = OFF");
        Transaction transaction(database_);
        for (std::int64_t person = 1; person <= personCount; ++person) {
            stores_.accounts.create({.name = fmt::format("Person {}", person),
                                     .email = fmt::format("p{}@example.org", person),
                                     .passwordHash = "",
                                     .role = "member",
                                     .timeZone = std::nullopt});
        }
        for (std::int64_t board = 1; board <= boardCount; ++board) {
            stores_.boards.addList(stores_.boards.create(fmt::format("Board {}", board), PersonId{1}), "List");
        }
        const std::int64_t spacing = std::max<std::int64_t>(1, tasks / dueCount);
        for (std::int64_t i = 0; i < tasks; ++i) {
            const bool due = i % spacing == 0;
            const std::string date = clock_.today().addingDays(due ? -(i % 5) : 1 + i % 300).text();
            const std::int64_t board = 1 + i % boardCount;
            const TaskId id = stores_.tasks.create({.board = {board},
                                                    .list = {board},
                                                    .parent = std::nullopt,
                                                    .title = fmt::format("Task {} word{}", i, i % 1000),
                                                    .description = "",
                                                    .dueDate = date});
            stores_.tasks.setAssignees(id, {PersonId{1 + i % personCount}});
            if (!due && i % 2 == 0)
                stores_.tasks.setCompletion(id, clock_.now() - std::chrono::days(1 + i % 900), std::nullopt);
        }
        transaction.commit();
        database_.runScript("PRAGMA wal_checkpoint(TRUNCATE)");
    }
    ~Workspace() {
        for (const char* suffix : {"", "-wal", "-shm"}) std::filesystem::remove(file_.string() + suffix);
    }

    Stores& stores() { return stores_; }
    Database& database() { return database_; }

private:
    std::filesystem::path file_;
    FixedClock clock_;
    SystemRandom random_;
    Database database_;
    Stores stores_;
};

Workspace& workspaceOf(std::int64_t tasks) {
    static std::map<std::int64_t, std::unique_ptr<Workspace>> workspaces;
    auto& workspace = workspaces[tasks];
    if (!workspace) workspace = std::make_unique<Workspace>(tasks);
    return *workspace;
}

/// Runs a list query and reads each of its tasks, as an answer does.
template <class Query>
void measure(benchmark::State& state, Query query) {
    Stores& stores = workspaceOf(state.range(0)).stores();
    std::size_t answered = 0;
    for (auto _ : state) {
        const auto ids = query(stores);
        for (const TaskId id : ids) benchmark::DoNotOptimize(stores.tasks.find(id));
        answered = ids.size();
    }
    state.counters["answer"] = static_cast<double>(answered);
}

const TaskQueries::DueRange byToday{.first = std::nullopt, .end = "2026-06-11"};

void dueToday(benchmark::State& state) {
    measure(state, [](Stores& stores) { return stores.queries.open({.viewer = PersonId{1}}, byToday, listLimit); });
}

void dueTodayMine(benchmark::State& state) {
    measure(state, [](Stores& stores) {
        return stores.queries.open({.viewer = PersonId{1}, .mine = true}, byToday, listLimit);
    });
}

void firstHundred(benchmark::State& state) {
    measure(state, [](Stores& stores) { return stores.queries.open({.viewer = PersonId{1}}, {}, 100); });
}

void firstHundredDone(benchmark::State& state) {
    measure(state,
            [](Stores& stores) { return stores.queries.completedSince({.viewer = PersonId{1}}, Instant{}, {}, 100); });
}

void search(benchmark::State& state) {
    measure(state, [](Stores& stores) { return stores.queries.search(PersonId{1}, "task word7", 25); });
}

void boardCounts(benchmark::State& state) {
    Stores& stores = workspaceOf(state.range(0)).stores();
    for (auto _ : state) benchmark::DoNotOptimize(stores.boards.counts(BoardId{1}, "2026-06-10"));
}

void printPlans() {
    Database database(":memory:");
    for (const std::string& sql : TaskQueries::statements()) {
        fmt::print("{}\n", sql);
        auto rows = database.query("EXPLAIN QUERY PLAN " + sql);
        while (rows.step()) fmt::print("    {}\n", rows.text(3));
    }
}

#define TABLES ->Arg(1'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMicrosecond)
BENCHMARK(dueToday) TABLES;
BENCHMARK(dueTodayMine) TABLES;
BENCHMARK(firstHundred) TABLES;
BENCHMARK(firstHundredDone) TABLES;
BENCHMARK(search) TABLES;
BENCHMARK(boardCounts) TABLES;
#undef TABLES

}  // namespace
}  // namespace parvela::service

int main(int argc, char** argv) {
    parvela::service::printPlans();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
