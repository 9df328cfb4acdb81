#include "ParseCommand.h"

#include <ParvelaKit/QuickAddJson.h>
#include <ParvelaKit/QuickAddParser.h>
#include <ParvelaKit/QuickAddReport.h>
#include <Platform/SystemClock.h>

#include <cerrno>
#include <string_view>
#include <unistd.h>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace parvela {

namespace {

constexpr std::size_t longestLine = std::size_t{1024} * 1024;
constexpr std::size_t readSize = std::size_t{64} * 1024;

void show(std::string_view report, const Console& console) {
    for (std::size_t end = report.find('\n'); end != std::string_view::npos; end = report.find('\n')) {
        console.line(report.substr(0, end));
        report.remove_prefix(end + 1);
    }
}

/// One input line, without its line break, as one output line.
std::string answerTo(std::string_view input) {
    const std::size_t tab = input.find('\t');
    const auto day = CivilDate::parse(input.substr(0, tab));
    if (tab == std::string_view::npos || !day) return R"({"error":"expected YYYY-MM-DD, a tab and a line"})";
    const auto result =
        QuickAdd::parse(input.substr(tab + 1), QuickAddContext{.today = *day, .members = {}, .labels = {}});
    std::string answer;
    QuickAdd::appendJson(answer, result);
    return answer;
}

/// Gives standard input line by line, and tells when the next line is not there yet.
class InputLines {
public:
    enum class Kind { line, tooLong, end };

    /// `beforeWaiting` is called when all that has arrived is used up.
    template <class Action>
    Kind next(std::string& line, Action beforeWaiting) {
        line.clear();
        bool any = false;
        bool tooLong = false;
        for (;;) {
            if (used_ == buffer_.size() && !fill(beforeWaiting)) {
                return tooLong ? Kind::tooLong : any ? Kind::line : Kind::end;
            }
            const std::size_t end = buffer_.find('\n', used_);
            const std::size_t stop = end == std::string::npos ? buffer_.size() : end;
            any = true;
            tooLong = tooLong || line.size() + (stop - used_) > longestLine;
            if (!tooLong) line.append(buffer_, used_, stop - used_);
            used_ = stop + (end == std::string::npos ? 0 : 1);
            if (end == std::string::npos) continue;
            if (line.ends_with('\r')) line.pop_back();
            return tooLong ? Kind::tooLong : Kind::line;
        }
    }

private:
    template <class Action>
    bool fill(Action beforeWaiting) {
        beforeWaiting();
        buffer_.resize(readSize);
        ssize_t count = 0;
        do {
            count = read(STDIN_FILENO, buffer_.data(), buffer_.size());
        } while (count < 0 && errno == EINTR);
        buffer_.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        used_ = 0;
        return !buffer_.empty();
    }

    std::string buffer_;
    std::size_t used_ = 0;
};

ExitStatus parseInput(const Console& console) {
    InputLines input;
    ExitStatus status = ExitStatus::success;
    std::string line;
    for (;;) {
        const auto kind = input.next(line, [&console] { console.flush(); });
        if (kind == InputLines::Kind::end) break;
        std::string answer = kind == InputLines::Kind::tooLong ? R"({"error":"the line is too long"})" : answerTo(line);
        if (answer.starts_with(R"({"error")")) status = ExitStatus::usage;
        answer += '\n';
        if (!console.write(answer)) break;
    }
    return status;
}

}  // namespace

ExitStatus parseLines(const ParseOptions& options, const Console& console) {
    if (options.manyLines) return parseInput(console);
    const auto today = options.today ? CivilDate::parse(*options.today) : std::optional(SystemClock().today());
    if (!today) {
        return console.fail(fmt::format("“{}” is not a date of the form YYYY-MM-DD.", *options.today),
                            ExitStatus::usage);
    }
    if (options.line.size() > longestLine) return console.fail("The line is too long.", ExitStatus::usage);
    const auto result = QuickAdd::parse(options.line, QuickAddContext{.today = *today, .members = {}, .labels = {}});
    if (options.json) {
        std::string text;
        QuickAdd::appendJson(text, result);
        console.json(nlohmann::json::parse(text));
    } else {
        show(QuickAdd::report(options.line, result, *today), console);
    }
    return ExitStatus::success;
}

}  // namespace parvela
