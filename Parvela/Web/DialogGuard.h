#pragma once

#include <chrono>

namespace parvela {

/// Tells a page that now and then says something from one that opens dialog after dialog, so that nobody gets to use
/// the window: its user is then offered to hear no more of it.
class DialogGuard {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    /// Dialogs in a row before the offer.
    static constexpr int patience = 2;
    /// A dialog that opens later than this after the last one was closed has nothing to do with it.
    static constexpr std::chrono::seconds pause{3};

    /// A dialog opens: whether it should offer to be the last one.
    bool offersSilence(TimePoint now) {
        if (now - lastClosed_ >= pause) inARow_ = 0;
        return ++inARow_ > patience;
    }
    void closed(TimePoint now) { lastClosed_ = now; }

    /// The page's dialogs are answered for the user from now on: until another page comes.
    void silence() { silenced_ = true; }
    bool isSilenced() const noexcept { return silenced_; }
    void reset() { *this = {}; }

private:
    int inARow_ = 0;
    TimePoint lastClosed_{};
    bool silenced_ = false;
};

}  // namespace parvela
