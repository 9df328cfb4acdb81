#pragma once

#include <functional>
#include <memory>

#include <webkit/webkit.h>

namespace parvela {

/// Finds out whether a page may go. A page with something unsaved has its user asked; one that does not answer goes all
/// the same if the user wants that.
///
/// The engine's own answer cannot be relied on: it takes a page that is busy for a twentieth of a second for one that
/// agrees.
class PageClosing {
public:
    explicit PageClosing(WebKitWebView* view);
    PageClosing(const PageClosing&) = delete;
    PageClosing& operator=(const PageClosing&) = delete;
    ~PageClosing();

    using Answer = std::function<void(bool mayClose)>;
    /// `answer` is called once, at once or later, unless this object goes before. A question that is still open gets
    /// "no", and its answer goes to the new one.
    void ask(Answer answer);
    bool isAsking() const noexcept;
    /// Every question from now on gets "yes" without asking the page.
    void agree() noexcept;

    /// Called before a question of our own is shown on the page's window.
    std::function<void()> onAttention;

    /// The page wants its user asked whether to leave it. False when that question has been overtaken: the user stays.
    bool userMayBeAsked();
    void userAnswered(bool leaves);
    /// The engine wants the view closed. True when that is nothing but its answer to a question of ours.
    bool closeRequested() noexcept;

private:
    struct State;
    static void begin(const std::shared_ptr<State>& state);
    static void pageAnswered(const std::shared_ptr<State>& state);
    static void waitForPage(const std::shared_ptr<State>& state);
    static void offerToClose(const std::shared_ptr<State>& state);
    static void settle(const std::shared_ptr<State>& state, bool mayClose);

    std::shared_ptr<State> state_;
};

}  // namespace parvela
