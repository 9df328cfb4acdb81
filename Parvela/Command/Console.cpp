#include "Console.h"

#include <ParvelaKit/Text.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <system_error>
#include <termios.h>
#include <unistd.h>

#include <fmt/format.h>
#include <glib.h>

namespace parvela {

namespace {

constexpr std::size_t longestSecret = 4096;

/// A form feed, an escape or a direction override would change more than the text it stands in.
bool isUnsafe(gunichar c) {
    const GUnicodeType type = g_unichar_type(c);
    const bool direction = (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069) || c == 0x200E || c == 0x200F;
    return type == G_UNICODE_CONTROL || type == G_UNICODE_LINE_SEPARATOR || type == G_UNICODE_PARAGRAPH_SEPARATOR ||
           direction;
}

std::size_t columnsOf(const std::string& text) {
    std::size_t columns = 0;
    for (const char* at = text.c_str(); *at != '\0'; at = g_utf8_next_char(at)) {
        const gunichar c = g_utf8_get_char(at);
        if (!g_unichar_iszerowidth(c)) columns += g_unichar_iswide(c) ? 2 : 1;
    }
    return columns;
}

std::string_view colourOf(Console::Style style) {
    switch (style) {
        case Console::Style::plain:
            return {};
        case Console::Style::dim:
            return "\x1b[2m";
        case Console::Style::warning:
            return "\x1b[31m";
    }
    return {};
}

/// Standard error that can't be written has nobody to hear about it.
void complain(const std::string& text) {
    (void)std::fputs(text.c_str(), stderr);
}

/// What is closed would be given to the next file or connection that is opened, and texts be written into that.
void occupyClosedStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) >= 0) continue;
        // Opened the wrong way round, so that using it fails as before.
        (void)open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

/// Keeps the terminal from showing what is typed. A signal that ends the program shows it again first.
class HiddenInput {
public:
    HiddenInput() {
        if (tcgetattr(STDIN_FILENO, &saved()) != 0) return;
        for (const int signal : signals) std::signal(signal, restoreAndEnd);
        termios hidden = saved();
        hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        active_ = tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden) == 0;
    }
    HiddenInput(const HiddenInput&) = delete;
    HiddenInput& operator=(const HiddenInput&) = delete;
    ~HiddenInput() {
        if (active_) tcsetattr(STDIN_FILENO, TCSAFLUSH, &saved());
        for (const int signal : signals) std::signal(signal, SIG_DFL);
    }

private:
    static constexpr int signals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

    /// A signal handler takes no argument.
    static termios& saved() {
        static termios state;
        return state;
    }

    static void restoreAndEnd(int signal) {
        tcsetattr(STDIN_FILENO, TCSANOW, &saved());
        std::signal(signal, SIG_DFL);
        std::raise(signal);
    }

    bool active_ = false;
};

ExitStatus statusOf(const APIError& error) {
    switch (error.kind()) {
        case APIError::Case::missingToken:
        case APIError::Case::unauthorized:
            return ExitStatus::notLinked;
        case APIError::Case::offline:
        case APIError::Case::timedOut:
            return ExitStatus::offline;
        default:
            return ExitStatus::failure;
    }
}

}  // namespace

std::string presentable(std::string_view text) {
    std::string result;
    const std::string valid = toUtf8(toUtf16(text));
    for (const char* at = valid.c_str(); at < valid.c_str() + valid.size(); at = g_utf8_next_char(at)) {
        if (isUnsafe(g_utf8_get_char(at))) {
            result += ' ';
        } else {
            result.append(at, static_cast<std::size_t>(g_utf8_next_char(at) - at));
        }
    }
    return result;
}

Console::Console() {
    occupyClosedStreams();
    const char* const noColour = std::getenv("NO_COLOR");
    const char* const terminal = std::getenv("TERM");
    coloured_ =
        isatty(STDOUT_FILENO) == 1 && !(noColour && *noColour) && terminal && std::string_view(terminal) != "dumb";
}

bool Console::write(std::string_view text) const {
    if (writeError_ == 0 && std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) writeError_ = errno;
    return writeError_ == 0;
}

void Console::flush() const {
    if (writeError_ == 0 && std::fflush(stdout) != 0) writeError_ = errno;
}

ExitStatus Console::finish(ExitStatus status) const {
    flush();
    // A reader that has seen enough is no failure.
    if (writeError_ == 0 || writeError_ == EPIPE) return status;
    const auto failed =
        fail(fmt::format("The output can't be written: {}.", std::generic_category().message(writeError_)));
    return status == ExitStatus::success ? failed : status;
}

void Console::line(std::string_view text) const {
    write(presentable(text) + '\n');
}

void Console::table(const std::vector<Row>& rows) const {
    std::vector<std::size_t> widths;
    std::vector<Row> shown = rows;
    for (Row& row : shown) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t column = 0; column < row.size(); ++column) {
            row[column].text = presentable(row[column].text);
            widths[column] = std::max(widths[column], columnsOf(row[column].text));
        }
    }
    for (const Row& row : shown) {
        std::string text;
        std::size_t missing = 0;
        for (std::size_t column = 0; column < row.size(); ++column) {
            const Cell& cell = row[column];
            if (!cell.text.empty()) {
                const std::string_view colour = coloured_ ? colourOf(cell.style) : std::string_view();
                text.append(missing, ' ').append(colour).append(cell.text).append(colour.empty() ? "" : "\x1b[0m");
                missing = 0;
            }
            missing += widths[column] - columnsOf(cell.text) + 2;
        }
        text += '\n';
        if (!write(text)) return;
    }
}

void Console::pair(std::string_view text, std::string_view meaning) const {
    write(fmt::format("{}\t{}\n", presentable(text), presentable(meaning)));
}

void Console::json(const nlohmann::json& value) const {
    write(value.dump(2, ' ', true, nlohmann::json::error_handler_t::replace) + '\n');
}

ExitStatus Console::fail(std::string_view message, ExitStatus status) const {
    // What was said so far comes first when both go to the same place.
    flush();
    complain(fmt::format("parvela: {}\n", presentable(message)));
    return status;
}

ExitStatus Console::fail(const APIError& error) const {
    return fail(error.message(), statusOf(error));
}

ExitStatus Console::fail(const IntentError& error) const {
    if (error.apiError) return fail(error.message, statusOf(*error.apiError));
    return fail(error.message, error.isMisuse() ? ExitStatus::usage : ExitStatus::failure);
}

void Console::warn(std::string_view message) const {
    (void)fail(message);
}

std::optional<std::string> Console::readSecret(std::string_view prompt) const {
    const bool typed = isatty(STDIN_FILENO) == 1;
    std::optional<HiddenInput> hidden;
    if (typed) {
        hidden.emplace();
        complain(std::string(prompt));
    }
    std::string text;
    char c = 0;
    bool any = false;
    while (read(STDIN_FILENO, &c, 1) == 1) {
        any = true;
        if (c == '\n') break;
        text += c;
        if (text.size() > longestSecret) return std::nullopt;
    }
    if (typed) complain("\n");
    return any ? std::optional(std::move(text)) : std::nullopt;
}

}  // namespace parvela
