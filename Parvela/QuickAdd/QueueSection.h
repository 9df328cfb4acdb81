#pragma once

#include "Support/Interface.h"
#include "Support/WaitingLines.h"

#include <ParvelaKit/Clock.h>
#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/OfflineQueue.h>
#include <Platform/MainLoop.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gtk/gtk.h>

namespace parvela {

/// What the popover says of the lines that are not on their boards yet: how many, when they are tried again, and each
/// line that failed with its reason, to retry or to discard. A discarded line can be taken back until the popover
/// closes or a moment has passed; one that still waits can be taken back into the field. Hidden while there is nothing
/// to say.
class QueueSection {
public:
    QueueSection(const Interface& interface, std::shared_ptr<WaitingLines> waitingLines, const Clock& clock);
    QueueSection(const QueueSection&) = delete;
    QueueSection& operator=(const QueueSection&) = delete;
    ~QueueSection();

    /// Nothing is read or drawn while the popover is not shown.
    enum class Shown { no, yes };
    void setShown(Shown shown);

    /// Takes a line's text into the field and then removes it from the queue; false when there is other text in the
    /// field.
    std::function<bool(const std::string& line, const std::function<bool()>& remove)> takeIntoField;

private:
    void updateSoon();
    void update();
    void addRow(const QueuedLine& line);
    void addButton(GtkWidget* row, const char* text, const std::string& line, std::function<void()> action);
    void edit(const QueuedLine& line);
    void discard(std::int64_t line);
    void discardNow();
    void clearRows();

    OfflineQueue& queue() { return waitingLines_->queue(); }

    Interface interface_;
    std::shared_ptr<WaitingLines> waitingLines_;
    const Clock& clock_;
    Shown shown_ = Shown::no;
    std::vector<QueuedLine> lines_;     ///< as they are shown
    std::set<std::int64_t> discarded_;  ///< still there to be taken back
    std::set<std::int64_t> discardedShown_;
    MainLoopTimer soon_;
    MainLoopTimer countdown_;
    MainLoopTimer discard_;
    std::vector<Connection> buttons_;
    Connection tryNow_;
    Subscription status_;
};

}  // namespace parvela
