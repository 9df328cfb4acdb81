#pragma once

#include "Model/AppModel.h"
#include "QuickAdd/BoardLists.h"
#include "QuickAdd/BoardPicker.h"
#include "QuickAdd/QuickAddField.h"
#include "QuickAdd/TokenChips.h"
#include "Support/Interface.h"
#include "Support/WaitingLines.h"

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/QuickAddSession.h>
#include <Platform/MainLoop.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtk/gtk.h>

namespace parvela {

/// The part of the popover in which a task is written: field, recognised pieces, board, button, and what became of the
/// line. Held by a shared pointer, so that a call that ends late can find it gone.
class QuickAddForm : public std::enable_shared_from_this<QuickAddForm> {
public:
    static std::shared_ptr<QuickAddForm> create(const Interface& interface, std::shared_ptr<AppModel> model,
                                                std::shared_ptr<WaitingLines> waitingLines);
    QuickAddForm(const QuickAddForm&) = delete;
    QuickAddForm& operator=(const QuickAddForm&) = delete;

    void focusField() { field_.focus(); }
    /// Writes what is typed to the preferences.
    void saveDraft();

    /// Takes a line that is kept elsewhere into the empty field, and `remove`s it there; when that is not possible, the
    /// field stays empty. False when there is text in the field.
    bool takeBack(const std::string& line, const std::function<bool()>& remove);

    void willShow();
    /// Forgets the last success and error; the text stays.
    void didClose();

    std::function<void(const TaskSummary&)> openTask;
    /// A line that was to close the popover has been added, or waits to be.
    std::function<void()> onAddedAndDone;

private:
    QuickAddForm(const Interface& interface, std::shared_ptr<AppModel> model,
                 std::shared_ptr<WaitingLines> waitingLines);
    void observe();

    void sessionChanged();
    void boardChanged();
    void useLists();
    void setToday();
    void submit(QuickAddField::Submit then);
    static Task<void> send(std::weak_ptr<QuickAddForm> form, std::shared_ptr<AppModel> model,
                           std::shared_ptr<WaitingLines> waitingLines, QuickAddSubmission submission,
                           std::string boardName, QuickAddField::Submit then);
    void ended(Result<QuickAddReceipt, QuickAddFailure> receipt, QuickAddField::Submit then);
    void queueChanged(const OfflineQueueStatus& status);
    void forgetOutcome();
    void update();

    Interface interface_;
    std::shared_ptr<AppModel> model_;
    std::shared_ptr<WaitingLines> waitingLines_;
    std::shared_ptr<BoardLists> lists_;
    QuickAddSession session_;
    CivilDate today_;
    QuickAddField field_;
    TokenChips chips_;
    BoardPicker board_;
    std::optional<TaskSummary> created_;
    std::optional<std::string> note_;
    MainLoopTimer draftTimer_;
    std::vector<Connection> connections_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace parvela
