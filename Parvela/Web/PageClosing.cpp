#include "Web/PageClosing.h"

#include <ParvelaKit/GLibPtr.h>
#include <Platform/MainLoop.h>

#include <string_view>
#include <utility>

#include <adwaita.h>

namespace parvela {

namespace {

/// How long a page may take before its user is offered to close it without its consent.
constexpr std::chrono::milliseconds patience{3000};

GtkWindow* windowOf(WebKitWebView* view) {
    GtkRoot* const root = gtk_widget_get_root(GTK_WIDGET(view));
    return GTK_IS_WINDOW(root) ? GTK_WINDOW(root) : nullptr;
}

}  // namespace

struct PageClosing::State {
    State(WebKitWebView* itsView, PageClosing* itsOwner) : view(itsView), owner(itsOwner) {}
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    ~State() { takeBackOffer(); }

    WebKitWebView* view;
    PageClosing* owner;
    Answer answer;
    bool agreed = false;
    bool pageIsAsked = false;   ///< the page still owes its answer, maybe to a question that nobody waits for any more
    bool isCalling = false;     ///< the engine is being told
    bool agreedAtOnce = false;  ///< it knew without asking the page
    bool leaves = true;         ///< what the user said to the page's own question
    bool wasOvertaken = false;  ///< that question came too late, and was answered for the user
    MainLoopTimer patience;
    GtkWidget* offer = nullptr;  ///< a weak pointer

    void takeBackOffer() {
        GtkWidget* const shown = offer;
        g_clear_weak_pointer(&offer);
        if (shown) gtk_window_destroy(GTK_WINDOW(shown));
    }
};

PageClosing::PageClosing(WebKitWebView* view) : state_(std::make_shared<State>(view, this)) {
}

PageClosing::~PageClosing() = default;

bool PageClosing::isAsking() const noexcept {
    return state_->answer != nullptr;
}

void PageClosing::agree() noexcept {
    state_->agreed = true;
}

void PageClosing::ask(Answer answer) {
    if (state_->agreed) {
        answer(true);
        return;
    }
    if (const auto earlier = std::exchange(state_->answer, std::move(answer))) {
        earlier(false);
    } else if (state_->pageIsAsked) {
        waitForPage(state_);
    } else {
        begin(state_);
    }
}

void PageClosing::begin(const std::shared_ptr<State>& state) {
    state->leaves = true;
    state->wasOvertaken = false;
    state->agreedAtOnce = false;
    state->isCalling = true;
    webkit_web_view_try_close(state->view);
    state->isCalling = false;
    if (state->agreedAtOnce) {
        settle(state, true);
        return;
    }
    // The page answers this after it has dealt with the wish to close, its user's answer included.
    constexpr std::string_view nothing = "0";
    state->pageIsAsked = true;
    webkit_web_view_evaluate_javascript(
        state->view, nothing.data(), static_cast<gssize>(nothing.size()), nullptr, nullptr, nullptr,
        [](GObject* view, GAsyncResult* result, gpointer data) {
            const std::unique_ptr<std::weak_ptr<State>> asked(static_cast<std::weak_ptr<State>*>(data));
            // A page that went away instead has nothing to keep.
            const auto value = Ref<JSCValue>::adopt(
                webkit_web_view_evaluate_javascript_finish(WEBKIT_WEB_VIEW(view), result, nullptr));
            if (const auto alive = asked->lock()) pageAnswered(alive);
        },
        new std::weak_ptr<State>(state));
    waitForPage(state);
}

void PageClosing::pageAnswered(const std::shared_ptr<State>& state) {
    state->pageIsAsked = false;
    if (!state->answer) return;
    if (state->wasOvertaken) {
        begin(state);
    } else {
        settle(state, state->leaves);
    }
}

bool PageClosing::userMayBeAsked() {
    if (state_->pageIsAsked && !state_->answer) {
        state_->wasOvertaken = true;
        return false;
    }
    state_->patience.reset();
    state_->takeBackOffer();
    return true;
}

void PageClosing::userAnswered(bool leaves) {
    if (!isAsking()) return;
    state_->leaves = leaves;
    waitForPage(state_);
}

bool PageClosing::closeRequested() noexcept {
    if (state_->isCalling) state_->agreedAtOnce = true;
    return state_->isCalling || state_->pageIsAsked;
}

void PageClosing::waitForPage(const std::shared_ptr<State>& state) {
    state->patience = MainLoopTimer(patience, [weak = std::weak_ptr(state)] {
        if (const auto waiting = weak.lock()) offerToClose(waiting);
    });
}

void PageClosing::offerToClose(const std::shared_ptr<State>& state) {
    if (state->owner->onAttention) state->owner->onAttention();
    GtkWidget* const shown = adw_message_dialog_new(windowOf(state->view), "This page isn't responding",
                                                    "What isn't saved in it is lost when it closes.");
    AdwMessageDialog* const dialog = ADW_MESSAGE_DIALOG(shown);
    adw_message_dialog_add_responses(dialog, "wait", "Wait", "close", "Close Anyway", nullptr);
    adw_message_dialog_set_response_appearance(dialog, "close", ADW_RESPONSE_DESTRUCTIVE);
    adw_message_dialog_set_default_response(dialog, "wait");
    adw_message_dialog_set_close_response(dialog, "wait");
    g_signal_connect_data(
        shown, "response", G_CALLBACK(+[](AdwMessageDialog*, const char* response, gpointer data) {
            const auto waiting = static_cast<std::weak_ptr<State>*>(data)->lock();
            if (!waiting || !waiting->answer) return;
            g_clear_weak_pointer(&waiting->offer);
            settle(waiting, std::string_view(response) == "close");
        }),
        new std::weak_ptr<State>(state),
        [](gpointer data, GClosure*) { delete static_cast<std::weak_ptr<State>*>(data); }, GConnectFlags{});
    g_set_weak_pointer(&state->offer, shown);
    gtk_window_present(GTK_WINDOW(shown));
}

void PageClosing::settle(const std::shared_ptr<State>& state, bool mayClose) {
    state->patience.reset();
    state->takeBackOffer();
    if (const auto answer = std::exchange(state->answer, nullptr)) answer(mayClose);
}

}  // namespace parvela
