#include "Web/PagePermissions.h"

#include <ParvelaKit/ServerConfig.h>

#include <memory>
#include <string_view>

#include <adwaita.h>
#include <fmt/format.h>

namespace parvela {

namespace {

/// What a page may ask for; kinds without a question are refused unasked.
struct Kind {
    std::string name;
    std::string question;
};

std::optional<Kind> kindOf(WebKitPermissionRequest* request) {
    if (WEBKIT_IS_NOTIFICATION_PERMISSION_REQUEST(request)) return Kind{"notifications", "show notifications"};
    if (WEBKIT_IS_CLIPBOARD_PERMISSION_REQUEST(request)) return Kind{"clipboard", "read what you copied"};
    if (WEBKIT_IS_GEOLOCATION_PERMISSION_REQUEST(request)) return Kind{"location", "know where you are"};
    if (WEBKIT_IS_USER_MEDIA_PERMISSION_REQUEST(request)) {
        auto* const media = WEBKIT_USER_MEDIA_PERMISSION_REQUEST(request);
        if (webkit_user_media_permission_is_for_display_device(media)) return Kind{"screen", "see your screen"};
        const bool video = webkit_user_media_permission_is_for_video_device(media) != FALSE;
        const bool audio = webkit_user_media_permission_is_for_audio_device(media) != FALSE;
        if (video && audio) return Kind{"camera and microphone", "use the camera and the microphone"};
        return video ? Kind{"camera", "use the camera"} : Kind{"microphone", "use the microphone"};
    }
    return std::nullopt;
}

/// Our word for what pages ask about by the web's own name.
std::string kindNamed(std::string_view name) {
    if (name == "geolocation") return "location";
    if (name == "clipboard-read") return "clipboard";
    return std::string(name);
}

constexpr std::string_view keyPrefix = "permission|";

std::string keyOf(const std::string& origin, const std::string& kind) {
    return std::string(keyPrefix) + kind + "|" + origin;
}

void settle(WebKitPermissionRequest* request, bool allowed) {
    if (allowed) {
        webkit_permission_request_allow(request);
    } else {
        webkit_permission_request_deny(request);
    }
}

/// A question on the screen. A request that goes unanswered is refused by the engine.
struct Question {
    Ref<WebKitPermissionRequest> request;
    Preferences preferences;
    std::string key;

    void answered(std::string_view response) const {
        const bool allowed = response == "allow";
        // Escape means "not now": asked again next time.
        if (allowed || response == "deny") preferences.store().set(key, allowed);
        settle(request.get(), allowed);
    }
};

}  // namespace

PagePermissions::PagePermissions(WebKitWebView* view, Preferences preferences)
    : view_(view), preferences_(std::move(preferences)) {
    connections_.push_back(connect<gboolean(WebKitWebView*, WebKitPermissionRequest*)>(
        view_, "permission-request", [this](WebKitWebView*, WebKitPermissionRequest* request) {
            return static_cast<gboolean>(requested(request));
        }));
    connections_.push_back(connect<gboolean(WebKitWebView*, WebKitPermissionStateQuery*)>(
        view_, "query-permission-state",
        [this](WebKitWebView*, WebKitPermissionStateQuery* query) { return static_cast<gboolean>(queried(query)); }));
}

PagePermissions::~PagePermissions() {
    g_clear_weak_pointer(&open_);
}

std::optional<bool> PagePermissions::remembered(const Preferences& preferences, const std::string& origin,
                                                const std::string& kind) {
    const auto stored = preferences.store().get(keyOf(origin, kind));
    const bool* const allowed = stored ? std::get_if<bool>(&*stored) : nullptr;
    return allowed ? std::optional(*allowed) : std::nullopt;
}

std::vector<PagePermissions::Answer> PagePermissions::answers(const Preferences& preferences) {
    std::vector<Answer> found;
    for (const std::string& key : preferences.store().keys(keyPrefix)) {
        const auto rest = std::string_view(key).substr(keyPrefix.size());
        const auto mark = rest.find('|');
        if (mark == std::string_view::npos) continue;
        Answer answer{.origin = std::string(rest.substr(mark + 1)), .kind = std::string(rest.substr(0, mark))};
        const auto allowed = remembered(preferences, answer.origin, answer.kind);
        if (!allowed) continue;
        answer.allowed = *allowed;
        found.push_back(std::move(answer));
    }
    return found;
}

void PagePermissions::forget(const Preferences& preferences, const Answer& answer) {
    preferences.store().remove(keyOf(answer.origin, answer.kind));
}

std::optional<std::string> PagePermissions::origin() const {
    const char* const uri = webkit_web_view_get_uri(view_);
    const auto url = uri ? Url::parseFromEngine(uri) : std::nullopt;
    if (!url || !url->host() || url->host()->empty()) return std::nullopt;
    return ServerConfig::origin(*url);
}

bool PagePermissions::requested(WebKitPermissionRequest* request) {
    const auto kind = kindOf(request);
    const auto asker = origin();
    if (!kind || !asker) {
        webkit_permission_request_deny(request);
        return true;
    }
    if (const auto answer = remembered(preferences_, *asker, kind->name)) {
        settle(request, *answer);
        return true;
    }
    if (open_) {
        // One question at a time; what is not remembered may be asked again.
        webkit_permission_request_deny(request);
        return true;
    }
    GtkRoot* const root = gtk_widget_get_root(GTK_WIDGET(view_));
    const std::string heading = fmt::format("Allow {} to {}?", *asker, kind->question);
    GtkWidget* const shown = adw_message_dialog_new(GTK_IS_WINDOW(root) ? GTK_WINDOW(root) : nullptr, heading.c_str(),
                                                    "Your answer is remembered for this site.");
    AdwMessageDialog* const dialog = ADW_MESSAGE_DIALOG(shown);
    adw_message_dialog_add_responses(dialog, "deny", "Don't Allow", "allow", "Allow", nullptr);
    adw_message_dialog_set_close_response(dialog, "later");
    g_signal_connect_data(
        shown, "response", G_CALLBACK(+[](AdwMessageDialog*, const char* response, gpointer question) {
            static_cast<Question*>(question)->answered(response);
        }),
        new Question{Ref<WebKitPermissionRequest>::ref(request), preferences_, keyOf(*asker, kind->name)},
        [](gpointer question, GClosure*) { delete static_cast<Question*>(question); }, GConnectFlags{});
    g_set_weak_pointer(&open_, shown);
    gtk_window_present(GTK_WINDOW(shown));
    return true;
}

bool PagePermissions::queried(WebKitPermissionStateQuery* query) const {
    const auto asker = origin();
    const auto answer = asker
                            ? remembered(preferences_, *asker, kindNamed(webkit_permission_state_query_get_name(query)))
                            : std::nullopt;
    webkit_permission_state_query_finish(query, !answer   ? WEBKIT_PERMISSION_STATE_PROMPT
                                                : *answer ? WEBKIT_PERMISSION_STATE_GRANTED
                                                          : WEBKIT_PERMISSION_STATE_DENIED);
    return true;
}

}  // namespace parvela
