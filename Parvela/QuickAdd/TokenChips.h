#pragma once

#include "Support/Interface.h"

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/QuickAddSession.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include <gtk/gtk.h>

namespace parvela {

/// What was recognised in the line, as a row of buttons in the line's order. Pressing one gives its piece back as plain
/// text; such a piece stays in the row, and pressing it again takes it back. The session must outlive the row.
class TokenChips {
public:
    TokenChips(const Interface& interface, QuickAddSession& session);
    TokenChips(const TokenChips&) = delete;
    TokenChips& operator=(const TokenChips&) = delete;

    /// Shows the session as it is.
    void update();

    /// The user has changed the session.
    std::function<void()> onChanged;

private:
    struct Chip {
        std::string style;  ///< name of the kind, or "literal"
        const char* icon = nullptr;
        std::string text;
        std::string name;  ///< for screen readers
        std::string help;

        bool operator==(const Chip&) const = default;
    };
    /// Which piece of the session a button stands for.
    struct Piece {
        enum class Kind { token, literal } kind;
        std::size_t index;
    };
    struct Button {
        GtkWidget* button;
        GtkImage* icon;
        GtkLabel* label;
        Chip shown;
        Connection clicked;
    };

    Chip chipFor(const Piece& piece) const;
    void addButton();
    static void show(Button& button, Chip chip);
    void pressed(std::size_t index);

    QuickAddSession& session_;
    GtkWidget* box_;
    GtkWidget* scroll_;
    std::vector<Piece> pieces_;
    std::vector<Button> buttons_;  ///< at least one for each piece
};

}  // namespace parvela
