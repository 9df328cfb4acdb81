#include "Web/PageDialogs.h"

#include <Platform/MainLoop.h>

#include <memory>
#include <string>
#include <string_view>

#include <adwaita.h>

namespace parvela {

namespace {

constexpr int promptFieldWidth = 280;
constexpr std::size_t longestHeading = 80;

/// A page's script waits until its dialog is closed; this closes it, whatever happens to the windows.
class OpenScriptDialog {
public:
    explicit OpenScriptDialog(WebKitScriptDialog* dialog) : dialog_(webkit_script_dialog_ref(dialog)) {}
    OpenScriptDialog(const OpenScriptDialog&) = delete;
    OpenScriptDialog& operator=(const OpenScriptDialog&) = delete;
    ~OpenScriptDialog() {
        webkit_script_dialog_close(dialog_);
        webkit_script_dialog_unref(dialog_);
    }

    WebKitScriptDialog* get() const noexcept { return dialog_; }

    void answer(std::string_view response, GtkEditable* field) {
        const bool accepted = response == "ok";
        switch (webkit_script_dialog_get_dialog_type(dialog_)) {
            case WEBKIT_SCRIPT_DIALOG_CONFIRM:
            case WEBKIT_SCRIPT_DIALOG_BEFORE_UNLOAD_CONFIRM:
                webkit_script_dialog_confirm_set_confirmed(dialog_, accepted);
                break;
            case WEBKIT_SCRIPT_DIALOG_PROMPT:
                if (accepted) webkit_script_dialog_prompt_set_text(dialog_, gtk_editable_get_text(field));
                break;
            case WEBKIT_SCRIPT_DIALOG_ALERT:
                break;
        }
    }

private:
    WebKitScriptDialog* dialog_;
};

constexpr std::string_view silence = "silence";

/// A script dialog on the screen, with the field of a prompt.
struct Question {
    std::shared_ptr<OpenScriptDialog> dialog;
    GtkEditable* field;
    std::shared_ptr<DialogGuard> guard;
    std::function<void(bool)> onLeaveAnswered;  ///< for the question whether to leave the page

    static void answered(AdwMessageDialog*, const char* response, Question* question) {
        const std::string_view answer = response;
        if (answer == silence) question->guard->silence();
        question->guard->closed(std::chrono::steady_clock::now());
        if (question->dialog) question->dialog->answer(answer, question->field);
        question->dialog.reset();
        if (question->onLeaveAnswered) question->onLeaveAnswered(answer == "ok");
    }
};

struct Texts {
    std::string heading;
    std::string body;
};

/// A short message stands as the heading, a long one as text below.
Texts textsOf(const char* message) {
    const std::string text = message ? message : "";
    if (text.size() > longestHeading || text.contains('\n')) return {"", text};
    return {text, ""};
}

}  // namespace

PageDialogs::PageDialogs(WebKitWebView* view) : view_(view) {
    connections_.push_back(connect<gboolean(WebKitWebView*, WebKitScriptDialog*)>(
        view_, "script-dialog", [this](WebKitWebView*, WebKitScriptDialog* dialog) {
            showScriptDialog(dialog);
            return gboolean{TRUE};
        }));
    connections_.push_back(connect<gboolean(WebKitWebView*, WebKitFileChooserRequest*)>(
        view_, "run-file-chooser", [this](WebKitWebView*, WebKitFileChooserRequest* request) {
            chooseFiles(request);
            return gboolean{TRUE};
        }));
}

GtkWindow* PageDialogs::window() const {
    GtkRoot* const root = gtk_widget_get_root(GTK_WIDGET(view_));
    return GTK_IS_WINDOW(root) ? GTK_WINDOW(root) : nullptr;
}

void PageDialogs::showScriptDialog(WebKitScriptDialog* dialog) {
    const auto open = std::make_shared<OpenScriptDialog>(dialog);
    const WebKitScriptDialogType type = webkit_script_dialog_get_dialog_type(dialog);
    const bool leaving = type == WEBKIT_SCRIPT_DIALOG_BEFORE_UNLOAD_CONFIRM;
    if (leaving ? mayAskToLeave && !mayAskToLeave() : guard_->isSilenced()) {
        // The engine does not bear a dialog that is closed before this call returns.
        runSoon([open] {});
        return;
    }
    const Texts texts = leaving ? Texts{"Leave this page?", "Changes that you made may not be saved."}
                                : textsOf(webkit_script_dialog_get_message(dialog));

    if (onAttention) onAttention();
    GtkWidget* const shown = adw_message_dialog_new(window(), nullptr, nullptr);
    AdwMessageDialog* const message = ADW_MESSAGE_DIALOG(shown);
    if (!texts.heading.empty()) adw_message_dialog_set_heading(message, texts.heading.c_str());
    if (!texts.body.empty()) adw_message_dialog_set_body(message, texts.body.c_str());
    if (type != WEBKIT_SCRIPT_DIALOG_ALERT) {
        adw_message_dialog_add_response(message, "cancel", leaving ? "Stay" : "Cancel");
        adw_message_dialog_set_close_response(message, "cancel");
    }
    if (guard_->offersSilence(std::chrono::steady_clock::now()) && !leaving) {
        adw_message_dialog_add_response(message, silence.data(), "No More Messages");
    }
    adw_message_dialog_add_response(message, "ok", leaving ? "Leave" : "OK");
    if (leaving) adw_message_dialog_set_response_appearance(message, "ok", ADW_RESPONSE_DESTRUCTIVE);
    if (type == WEBKIT_SCRIPT_DIALOG_ALERT) adw_message_dialog_set_close_response(message, "ok");
    adw_message_dialog_set_default_response(message, leaving ? "cancel" : "ok");

    GtkEditable* field = nullptr;
    if (type == WEBKIT_SCRIPT_DIALOG_PROMPT) {
        GtkWidget* const entry = gtk_entry_new();
        field = GTK_EDITABLE(entry);
        gtk_widget_set_size_request(entry, promptFieldWidth, -1);
        gtk_entry_set_activates_default(GTK_ENTRY(entry), TRUE);
        if (const char* const text = webkit_script_dialog_prompt_get_default_text(dialog)) {
            gtk_editable_set_text(field, text);
        }
        gtk_accessible_update_property(GTK_ACCESSIBLE(entry), GTK_ACCESSIBLE_PROPERTY_LABEL, "Answer", -1);
        adw_message_dialog_set_extra_child(message, entry);
        gtk_window_set_focus(GTK_WINDOW(shown), entry);
    }
    // The question lives as long as the dialog, and with it the page's wait.
    g_signal_connect_data(
        shown, "response", G_CALLBACK(&Question::answered),
        new Question{open, field, guard_, leaving ? onLeaveAnswered : nullptr},
        [](gpointer question, GClosure*) { delete static_cast<Question*>(question); }, GConnectFlags{});
    gtk_window_present(GTK_WINDOW(shown));
}

void PageDialogs::chooseFiles(WebKitFileChooserRequest* given) {
    const auto request = Ref<WebKitFileChooserRequest>::ref(given);
    const bool several = webkit_file_chooser_request_get_select_multiple(given) != FALSE;
    chooser_ = Ref<GtkFileChooserNative>::adopt(gtk_file_chooser_native_new(
        several ? "Choose Files" : "Choose File", window(), GTK_FILE_CHOOSER_ACTION_OPEN, "Upload", "Cancel"));
    GtkFileChooser* const chooser = GTK_FILE_CHOOSER(chooser_.get());
    gtk_file_chooser_set_select_multiple(chooser, several);
    if (GtkFileFilter* const filter = webkit_file_chooser_request_get_mime_types_filter(given)) {
        gtk_file_chooser_add_filter(chooser, filter);
    }
    gtk_native_dialog_set_modal(GTK_NATIVE_DIALOG(chooser_.get()), TRUE);
    chosen_ = connect<void(GtkNativeDialog*, int)>(
        chooser_.get(), "response", [request](GtkNativeDialog* dialog, int response) {
            if (response != GTK_RESPONSE_ACCEPT) {
                webkit_file_chooser_request_cancel(request.get());
                return;
            }
            const auto files = Ref<GListModel>::adopt(gtk_file_chooser_get_files(GTK_FILE_CHOOSER(dialog)));
            std::vector<std::string> paths;
            for (guint index = 0; index < g_list_model_get_n_items(files.get()); ++index) {
                const auto file = Ref<GFile>::adopt(G_FILE(g_list_model_get_item(files.get(), index)));
                if (const CharPtr path(g_file_get_path(file.get())); path) paths.emplace_back(path.get());
            }
            std::vector<const char*> texts;
            for (const std::string& path : paths) texts.push_back(path.c_str());
            texts.push_back(nullptr);
            webkit_file_chooser_request_select_files(request.get(), texts.data());
        });
    gtk_native_dialog_show(GTK_NATIVE_DIALOG(chooser_.get()));
}

}  // namespace parvela
