// Decoding a list of 5,000 tasks into records. With a file name as its only argument the program writes that list
// instead, so that other JSON readers can be measured on the same bytes (bench/json-parse.mjs).

#include <ParvelaKit/Json/Decoder.h>
#include <ParvelaKit/Json/Encoder.h>
#include <ParvelaKit/Records.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <random>
#include <string>

#include <benchmark/benchmark.h>
#include <fmt/format.h>

namespace parvela {
namespace {

constexpr int taskCount = 5000;

class TaskMaker {
public:
    TaskSummary next(int number) {
        TaskSummary task{.id = id("k57"),
                         .key = fmt::format("TSK-{}", number),
                         .title = words(6),
                         .board = "Product launch",
                         .boardId = boardId_,
                         .list = "In progress",
                         .listId = id("m17"),
                         .assignees = {id("n57")},
                         .priority = "medium",
                         .labels = {"design"},
                         .done = number % 4 == 0,
                         .url = fmt::format("/t/TSK-{}", number),
                         .description = words(9),
                         .labelTags = std::vector<LabelTag>{{id("p97"), "design", "blue"}}};
        if (number % 3 != 0) task.dueDate = fmt::format("2026-{:02}-{:02}", 1 + number % 12, 1 + number % 28);
        if (number % 5 == 0) task.dueTime = "17:30";
        return task;
    }

private:
    std::string id(const char* prefix) {
        return fmt::format("{}{:016x}{:08x}", prefix, random_(), random_() & 0xffffffffU);
    }

    std::string words(int count) {
        static constexpr const char* vocabulary[] = {"write",    "the",   "launch", "review", "für",
                                                     "\"beta\"", "plan",  "budget", "mobile", "page",
                                                     "with",     "Anaïs", "tests",  "soon"};
        std::string text;
        for (int i = 0; i < count; ++i) text += (i == 0 ? "" : " ") + std::string(vocabulary[random_() % 14]);
        return text;
    }

    std::mt19937_64 random_{2026};
    std::string boardId_ = id("b97");
};

const std::string& taskList() {
    static const std::string text = [] {
        TasksResponse response{.today = "2026-06-12"};
        TaskMaker maker;
        for (int i = 1; i <= taskCount; ++i) response.tasks.push_back(maker.next(i));
        return json::encode(response);
    }();
    return text;
}

void decodeTaskList(benchmark::State& state) {
    const std::string& text = taskList();
    for (auto unused : state) {
        auto response = json::decode<TasksResponse>(text);
        if (!response || response->tasks.size() != taskCount) state.SkipWithError("the list did not decode");
        benchmark::DoNotOptimize(response);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(decodeTaskList)->Unit(benchmark::kMillisecond)->MinTime(1.0);

void encodeTaskList(benchmark::State& state) {
    const auto response = json::decode<TasksResponse>(taskList());
    for (auto unused : state) benchmark::DoNotOptimize(json::encode(*response));
}
BENCHMARK(encodeTaskList)->Unit(benchmark::kMillisecond)->MinTime(1.0);

}  // namespace
}  // namespace parvela

int main(int argc, char** argv) {
    if (argc == 2 && argv[1][0] != '-') {
        std::ofstream file(argv[1], std::ios::binary);
        file << parvela::taskList() << std::flush;
        if (file) return 0;
        std::fprintf(stderr, "cannot write %s\n", argv[1]);
        return 1;
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
