#include <ParvelaKit/QuickAddJson.h>
#include <ParvelaKit/Text.h>

#include <array>
#include <charconv>
#include <optional>
#include <string_view>
#include <vector>

namespace parvela::QuickAdd {

namespace {

using namespace std::string_view_literals;

std::string_view freqName(QuickAddRepeat::Freq freq) {
    constexpr std::array names{"daily"sv, "weekdays"sv, "weekly"sv, "monthly"sv};
    return names.at(static_cast<std::size_t>(freq));
}

class Writer {
public:
    explicit Writer(std::string& text) : text_(text) {}

    void write(std::string_view value) {
        if (!isValidUtf8(value)) return write(toUtf8(toUtf16(value)));
        text_ += '"';
        std::size_t written = 0;
        for (std::size_t i = 0; i < value.size(); ++i) {
            if (!needsEscape(value[i])) continue;
            text_ += value.substr(written, i - written);
            writeEscaped(value[i]);
            written = i + 1;
        }
        text_ += value.substr(written);
        text_ += '"';
    }

    void write(std::size_t number) {
        std::array<char, 20> digits{};
        text_.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
    }
    void write(int number) { write(static_cast<std::size_t>(number)); }

    template <class T>
    void write(const std::optional<T>& value) {
        if (value) {
            write(*value);
        } else {
            text_ += "null";
        }
    }

    template <class T>
    void write(const std::vector<T>& values) {
        text_ += '[';
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (i > 0) text_ += ',';
            write(values[i]);
        }
        text_ += ']';
    }

    void write(const QuickAddToken& token) {
        key(R"({"start":)", token.start);
        key(R"(,"end":)", token.end);
        key(R"(,"kind":)", kindName(token.kind));
        key(R"(,"value":)", token.value);
        key(R"(,"display":)", token.display);
        text_ += '}';
    }

    void write(const QuickAddRepeat& repeat) {
        key(R"({"freq":)", freqName(repeat.freq));
        key(R"(,"weekdays":)", repeat.weekdays);
        key(R"(,"monthDay":)", repeat.monthDay);
        key(R"(,"rule":)", repeat.ruleString());
        key(R"(,"display":)", repeat.displayText());
        text_ += '}';
    }

    /// `written` is the key with the punctuation around it.
    template <class T>
    void key(std::string_view written, const T& value) {
        text_ += written;
        write(value);
    }

private:
    static bool needsEscape(char c) { return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\'; }

    void writeEscaped(char c) {
        constexpr std::string_view hexadecimal = "0123456789abcdef";
        text_ += '\\';
        switch (c) {
            case '\n':
                text_ += 'n';
                break;
            case '\t':
                text_ += 't';
                break;
            case '"':
            case '\\':
                text_ += c;
                break;
            default:
                text_ += "u00";
                text_ += hexadecimal[static_cast<unsigned char>(c) >> 4U];
                text_ += hexadecimal[static_cast<unsigned char>(c) & 0xfU];
        }
    }

    std::string& text_;
};

}  // namespace

void appendJson(std::string& text, const QuickAddResult& result) {
    Writer writer(text);
    writer.key(R"({"title":)", result.title);
    writer.key(R"(,"assigneeIds":)", result.assigneeIds);
    writer.key(R"(,"labelIds":)", result.labelIds);
    writer.key(R"(,"priority":)", apiString(result.priority));
    writer.key(R"(,"dueDate":)", result.dueDate);
    writer.key(R"(,"dueTime":)", result.dueTime);
    writer.key(R"(,"repeat":)", result.repeat);
    writer.key(R"(,"tokens":)", result.tokens);
    text += '}';
}

}  // namespace parvela::QuickAdd
