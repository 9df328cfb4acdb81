#pragma once

#include "ExitStatus.h"

#include <ParvelaKit/APIError.h>
#include <ParvelaKit/ParvelaIntents.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace parvela {

enum class OutputForm { text, json };

/// What the command says: results on standard output, problems on standard error.
///
/// Texts of the service are shown without control characters, so that no title can play tricks with the terminal.
/// Colours appear on a terminal only, and never when NO_COLOR is set (no-color.org).
class Console {
public:
    enum class Style { plain, dim, warning };

    struct Cell {
        std::string text;
        Style style = Style::plain;
    };
    using Row = std::vector<Cell>;

    Console();

    void line(std::string_view text) const;
    /// Columns under each other. Later rows may be shorter.
    void table(const std::vector<Row>& rows) const;
    /// Two texts with a tab between them, for programs.
    void pair(std::string_view text, std::string_view meaning) const;
    /// One JSON document. Other characters than ASCII are escaped.
    void json(const nlohmann::json& value) const;
    /// Text as it stands; false when the output takes no more.
    bool write(std::string_view text) const;
    void flush() const;

    /// To be called at the end: gives `status` back, or a failure when not everything could be written.
    ExitStatus finish(ExitStatus status) const;

    /// One line on standard error; gives `status` back.
    ExitStatus fail(std::string_view message, ExitStatus status = ExitStatus::failure) const;
    /// The error's own text.
    ExitStatus fail(const APIError& error) const;
    ExitStatus fail(const IntentError& error) const;
    void warn(std::string_view message) const;

    /// One line from standard input, not shown when it is typed; none when there is nothing more, or too much.
    std::optional<std::string> readSecret(std::string_view prompt) const;

private:
    bool coloured_;
    mutable int writeError_ = 0;  ///< the first one, as errno has it
};

/// Without control characters and characters that reorder text.
std::string presentable(std::string_view text);

}  // namespace parvela
