#include "Console.h"

#include <ParvelaKit/Text.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
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
    const char* const noColour = std::getenv("NO_COLOR");
    const char* const terminal = std::getenv("TERM");
    coloured_ =
        isatty(STDOUT_FILENO) == 1 && !(noColour && *noColour) && terminal && std::string_view(terminal) != "dumb";
}

void Console::line(std::string_view text) const {
    fmt::print("{}\n", presentable(text));
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
        fmt::print("{}\n", text);
    }
}

void Console::pair(std::string_view text, std::string_view meaning) const {
    fmt::print("{}\t{}\n", presentable(text), presentable(meaning));
}

void Console::json(const nlohmann::json& value) const {
    fmt::print("{}\n", value.dump(2, ' ', true, nlohmann::json::error_handler_t::replace));
}

ExitStatus Console::fail(std::string_view message, ExitStatus status) const {
    // What was said so far comes first when both go to the same place.
    std::fflush(stdout);
    fmt::print(stderr, "parvela: {}\n", presentable(message));
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
        fmt::print(stderr, "{}", prompt);
        std::fflush(stderr);
        hidden.emplace();
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
    if (typed) fmt::print(stderr, "\n");
    return any ? std::optional(std::move(text)) : std::nullopt;
}

}  // namespace parvela
