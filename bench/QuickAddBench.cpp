// What parsing a line of quick add costs: lines as people type them, long ones, and ones made to be slow. All lines
// come from fixed seeds. Times are those that the processor spent on this thread, the best of many rounds: a busy
// machine disturbs them little.

#include "support/QuickAddSamples.h"

#include <ParvelaKit/QuickAddParser.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <limits>
#include <string>
#include <time.h>
#include <vector>

#include <benchmark/benchmark.h>
#include <fmt/format.h>

namespace parvela {
namespace {

double processorNanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

/// Nanoseconds that `work` takes at best, tried for about `budget`.
template <class Work>
double bestTime(Work work, std::chrono::nanoseconds budget) {
    double best = std::numeric_limits<double>::max();
    const double end = processorNanoseconds() + static_cast<double>(budget.count());
    for (int round = 0; round < 3 || processorNanoseconds() < end; ++round) {
        const double start = processorNanoseconds();
        work();
        best = std::min(best, processorNanoseconds() - start);
    }
    return best;
}

void parse(const std::string& line, const QuickAddContext& context) {
    auto result = QuickAdd::parse(line, context);
    benchmark::DoNotOptimize(result);
}

void measureLines(const char* name, std::size_t count, std::size_t length, const QuickAddContext& context) {
    samples::LineGenerator generator(2025);
    std::vector<std::string> lines;
    std::size_t characters = 0;
    std::size_t tokens = 0;
    for (std::size_t i = 0; i < count; ++i) {
        lines.push_back(generator.ordinaryLine(length * 4 / 5 + i % (length * 2 / 5 + 1)));
        characters += lines.back().size();
        tokens += QuickAdd::parse(lines.back(), context).tokens.size();
    }
    const double time = bestTime(
        [&] {
            for (const auto& line : lines) parse(line, context);
        },
        std::chrono::seconds(1));
    const auto perLine = [count](auto sum) { return static_cast<double>(sum) / static_cast<double>(count); };
    fmt::print(
        "{:<28} {:>5} lines of {:>5.1f} bytes, {:>5.2f} tokens each: {:>8.0f} ns a line, {:>9.0f} lines a second\n",
        name, count, perLine(characters), perLine(tokens), perLine(time), 1e9 / perLine(time));
}

QuickAddContext largeTeam() {
    QuickAddContext context{
        .today = {2025, 6, 10}, .members = std::vector<QuickAddMember>(), .labels = std::vector<QuickAddLabel>()};
    for (int i = 0; i < 500; ++i) {
        context.members->push_back(
            {fmt::format("u{}", i), fmt::format("Member{} Néme", i), fmt::format("m{}@example.com", i)});
        context.labels->push_back({fmt::format("l{}", i), fmt::format("Label {}", i)});
    }
    return context;
}

std::string repeated(std::string_view piece, std::size_t length) {
    std::string text;
    while (text.size() < length) text += piece;
    text.resize(length);
    return text;
}

/// "@member1 @member2 …", each different
std::string numbered(std::string_view prefix, std::size_t length) {
    std::string text;
    for (int i = 0; text.size() < length; ++i) text += fmt::format("{}{} ", prefix, i % 700);
    text.resize(length);
    return text;
}

void measureGrowth() {
    struct Content {
        const char* name;
        std::string (*make)(std::string_view, std::size_t);
        std::string_view piece;
        QuickAddContext context;
    };
    const auto unknown = samples::unknownLists();
    const auto board = samples::boardContext();
    const auto team = largeTeam();
    const std::vector<Content> contents{
        {"one word", repeated, "x", unknown},
        {"letters outside ASCII", repeated, "\u00e9\u4e16 ", unknown},
        {"dotted capital I", repeated, "\u0130 ", unknown},
        {"blanks", repeated, " ", unknown},
        {"#", repeated, "#", unknown},
        {"quotes", repeated, "\"", unknown},
        {"#\"", repeated, "#\"", unknown},
        {"#\u201c, never closed", repeated, "#\u201c", unknown},
        {"quoted labels", repeated, "#\"a b\" ", unknown},
        {"quoted labels, none known", repeated, "#\"a b\" ", board},
        {"@", repeated, "@", unknown},
        {"@a @a", repeated, "@a ", unknown},
        {"different people", numbered, "@x", unknown},
        {"different people of 500", numbered, "@member", team},
        {"unknown people of 500", numbered, "@nobody", team},
        {"half names of 500", numbered, "@memb", team},
        {"different labels of 500", numbered, "#label-", team},
        {"punctuation", repeated, ",.;:!?)]\"' ", unknown},
        {"one run of punctuation", repeated, "!", unknown},
        {"lead words", repeated, "due on by at ", unknown},
        {"every mon", repeated, "every mon and ", unknown},
        {"in 3", repeated, "in 3 ", unknown},
        {"numbers", repeated, "1 2026 9:30 6/10 ", unknown},
        {"tokens and commas", repeated, "@a , #b ; ", unknown},
        {"invalid UTF-8", repeated, "\xff", unknown},
    };
    constexpr std::size_t lengths[] = {10, 100, 1000, 10000, 100000};
    fmt::print("\n{:<28}", "microseconds by bytes");
    for (const auto length : lengths) fmt::print("{:>10}", length);
    fmt::print("\n");
    for (const auto& [name, make, piece, context] : contents) {
        fmt::print("{:<28}", name);
        for (const auto length : lengths) {
            const std::string line = make(piece, length);
            const std::size_t repetitions = 1 + 10000 / length;  // asking for the time costs as much as a short line
            const double time = bestTime(
                [&] {
                    for (std::size_t i = 0; i < repetitions; ++i) parse(line, context);
                },
                std::chrono::milliseconds(60));
            fmt::print("{:>10.2f}", time / static_cast<double>(repetitions) / 1000);
        }
        fmt::print("\n");
        std::fflush(stdout);
    }
}

void run() {
    measureLines("board with people and labels", 2000, 50, samples::boardContext());
    measureLines("lists unknown", 2000, 50, samples::unknownLists());
    measureLines("board of 500 and 500", 2000, 50, largeTeam());
    measureLines("long lines", 200, 500, samples::boardContext());
    measureLines("long lines, lists unknown", 200, 500, samples::unknownLists());
    measureGrowth();
}

}  // namespace
}  // namespace parvela

int main() {
    parvela::run();
}
