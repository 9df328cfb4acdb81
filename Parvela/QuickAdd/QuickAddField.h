#pragma once

#include "QuickAdd/CompletionList.h"
#include "Support/Interface.h"

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/QuickAddSession.h>

#include <functional>
#include <string>
#include <vector>

#include <gtk/gtk.h>

namespace parvela {

/// The one-line field on a quick-add session: shows its text with every recognised piece highlighted where it stands
/// and the names on offer below, and tells it of edits and keys. The session must outlive the field.
class QuickAddField {
public:
    QuickAddField(const Interface& interface, QuickAddSession& session);
    QuickAddField(const QuickAddField&) = delete;
    QuickAddField& operator=(const QuickAddField&) = delete;

    void focus();
    void selectNothing();
    /// Shows the session as it is.
    void update();
    /// The same with nothing to undo.
    void reset();

    /// The user has changed the session.
    std::function<void()> onChanged;
    enum class Submit { stay, close };
    std::function<void(Submit)> onSubmit;

private:
    gboolean keyPressed(guint key, GdkModifierType modifiers);
    void edited();
    void caretMoved();
    void showText();
    void highlight();

    QuickAddSession& session_;
    GtkEntry* entry_;
    GtkEditable* text_;
    CompletionList completions_;
    bool isComposing_ = false;  ///< an input method is in the middle of a character
    bool isShowing_ = false;    ///< the text is changed by us
    std::string highlighted_;
    std::vector<Connection> connections_;
};

}  // namespace parvela
