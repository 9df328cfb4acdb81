#include "Web/WebEnvironment.h"

#include "Support/InstalledFiles.h"

#include <ParvelaKit/NativeBridge.h>

#include <cstdlib>
#include <memory>
#include <utility>

#include <fmt/format.h>

namespace parvela {

namespace {

Ref<WebKitSettings> makeSettings() {
    // Pages are inspected only on demand: by the variable that starts WebKit's inspector server, or by our own.
    const gboolean inspectable = std::getenv("WEBKIT_INSPECTOR_HTTP_SERVER") || std::getenv("PARVELA_INSPECTOR");
    auto settings =
        Ref<WebKitSettings>::adopt(WEBKIT_SETTINGS(g_object_new(WEBKIT_TYPE_SETTINGS,                             //
                                                                "enable-back-forward-navigation-gestures", TRUE,  //
                                                                "enable-developer-extras", inspectable,           //
                                                                "enable-fullscreen", TRUE,                        //
                                                                "enable-javascript", TRUE,                        //
                                                                // A page that comes back from the cache says nothing
                                                                // of itself again, neither its shell nor its boards.
                                                                "enable-page-cache", FALSE,                         //
                                                                "javascript-can-open-windows-automatically", TRUE,  //
                                                                nullptr)));
    // The web app knows the desktop shells by the one name.
    const std::string agent = std::string(webkit_settings_get_user_agent(settings.get())) + " " +
                              NativeBridge::userAgentSuffix(NativeBridge::Platform::macos);
    webkit_settings_set_user_agent(settings.get(), agent.c_str());
    return settings;
}

Ref<WebKitNetworkSession> makeSession(const XdgPaths& paths) {
    ensurePrivateFolder(paths.data);
    ensurePrivateFolder(paths.cache);
    const auto data = paths.data / "web";
    const auto cache = paths.cache / "web";
    auto session = Ref<WebKitNetworkSession>::adopt(webkit_network_session_new(data.c_str(), cache.c_str()));
    webkit_cookie_manager_set_persistent_storage(webkit_network_session_get_cookie_manager(session.get()),
                                                 (data / "cookies.sqlite").c_str(),
                                                 WEBKIT_COOKIE_PERSISTENT_STORAGE_SQLITE);
    return session;
}

std::string identifierOf(const std::string& rules) {
    const CharPtr sum(
        g_compute_checksum_for_data(G_CHECKSUM_SHA256, reinterpret_cast<const guchar*>(rules.data()), rules.size()));
    return "navigation-" + std::string(sum.get(), 32);
}

}  // namespace

/// One step of putting a filter in force. May outlive the environment: then the cancellable says so.
struct WebEnvironment::FilterRequest {
    WebEnvironment* environment;
    Ref<GCancellable> cancellable;
    std::string identifier;
    std::string rules;

    /// The environment, if it is still there and still wants this filter.
    WebEnvironment* owner() const {
        if (g_cancellable_is_cancelled(cancellable.get())) return nullptr;
        return environment->filterIdentifier_ == identifier ? environment : nullptr;
    }
};

WebEnvironment::WebEnvironment(const XdgPaths& paths)
    : context_(Ref<WebKitWebContext>::adopt(webkit_web_context_new())),
      session_(makeSession(paths)),
      content_(Ref<WebKitUserContentManager>::adopt(webkit_user_content_manager_new())),
      filters_(Ref<WebKitUserContentFilterStore>::adopt(
          webkit_user_content_filter_store_new((paths.cache / "content-filters").c_str()))),
      settings_(makeSettings()),
      cancellable_(Ref<GCancellable>::adopt(g_cancellable_new())) {
    const std::string folder = webProcessFolder().string();
    webkit_web_context_add_path_to_sandbox(context_.get(), folder.c_str(), TRUE);
    extensionsConnection_ = connect<void(WebKitWebContext*)>(
        context_.get(), "initialize-web-process-extensions", [folder](WebKitWebContext* context) {
            webkit_web_context_set_web_process_extensions_directory(context, folder.c_str());
        });
}

WebEnvironment::~WebEnvironment() {
    g_cancellable_cancel(cancellable_.get());
}

Ref<WebKitWebView> WebEnvironment::makeView(WebKitWebView* related) const {
    // A related view takes context and network session from the other one and refuses to be given them.
    GObject* view = nullptr;
    if (related) {
        view = G_OBJECT(g_object_new(WEBKIT_TYPE_WEB_VIEW, "related-view", related, "settings", settings_.get(),
                                     "user-content-manager", content_.get(), nullptr));
    } else {
        view = G_OBJECT(g_object_new(WEBKIT_TYPE_WEB_VIEW, "web-context", context_.get(), "network-session",
                                     session_.get(), "settings", settings_.get(), "user-content-manager",
                                     content_.get(), nullptr));
    }
    return Ref<WebKitWebView>::sink(WEBKIT_WEB_VIEW(view));
}

void WebEnvironment::setSpellChecking(const SpellChecking& checking) {
    std::vector<const char*> languages;
    for (const std::string& language : checking.languages) languages.push_back(language.c_str());
    languages.push_back(nullptr);
    webkit_web_context_set_spell_checking_languages(context_.get(), languages.data());
    webkit_web_context_set_spell_checking_enabled(context_.get(), checking.enabled);
}

void WebEnvironment::setNativeInfoScript(const std::string& source) {
    webkit_user_content_manager_remove_all_scripts(content_.get());
    WebKitUserScript* const script =
        webkit_user_script_new(source.c_str(), WEBKIT_USER_CONTENT_INJECT_TOP_FRAME,
                               WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START, nullptr, nullptr);
    webkit_user_content_manager_add_script(content_.get(), script);
    webkit_user_script_unref(script);
    hasScript_ = true;
    proceed();
}

void WebEnvironment::setContentFilter(std::string rules) {
    const std::string identifier = identifierOf(rules);
    if (identifier == filterIdentifier_) return;
    filterIdentifier_ = identifier;
    filterInForce_ = false;

    webkit_user_content_filter_store_load(filters_.get(), identifier.c_str(), cancellable_.get(), filterLoaded,
                                          new FilterRequest{this, cancellable_, identifier, std::move(rules)});
}

void WebEnvironment::filterLoaded(GObject* store, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<FilterRequest> request(static_cast<FilterRequest*>(data));
    FilterPtr filter(
        webkit_user_content_filter_store_load_finish(WEBKIT_USER_CONTENT_FILTER_STORE(store), result, nullptr));
    WebEnvironment* const self = request->owner();
    if (!self) return;
    if (filter) {
        self->adopt(std::move(filter));
        return;
    }
    // Not compiled on this machine before, or by another version of the engine.
    const BytesPtr rules(g_bytes_new(request->rules.data(), request->rules.size()));
    webkit_user_content_filter_store_save(self->filters_.get(), request->identifier.c_str(), rules.get(),
                                          self->cancellable_.get(), filterCompiled, new FilterRequest(*request));
}

void WebEnvironment::filterCompiled(GObject* store, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<FilterRequest> request(static_cast<FilterRequest*>(data));
    ErrorPtr error;
    FilterPtr filter(
        webkit_user_content_filter_store_save_finish(WEBKIT_USER_CONTENT_FILTER_STORE(store), result, error.out()));
    WebEnvironment* const self = request->owner();
    if (!self) return;
    if (filter) {
        self->adopt(std::move(filter));
        self->removeStaleFilters();
    } else if (self->onFailure_) {
        self->onFailure_(
            fmt::format("The rules of navigation could not be prepared: {}. Start Parvela again.", error->message));
    }
}

void WebEnvironment::adopt(FilterPtr filter) {
    // Filters are known by their identifiers: a newer one takes the place of its namesake, and removing that would
    // remove both.
    webkit_user_content_manager_add_filter(content_.get(), filter.get());
    const auto name = [](const FilterPtr& one) { return webkit_user_content_filter_get_identifier(one.get()); };
    if (filter_ && !g_str_equal(name(filter_), name(filter))) {
        webkit_user_content_manager_remove_filter(content_.get(), filter_.get());
    }
    filter_ = std::move(filter);
    filterInForce_ = true;
    proceed();
}

void WebEnvironment::removeStaleFilters() {
    webkit_user_content_filter_store_fetch_identifiers(
        filters_.get(), cancellable_.get(),
        [](GObject* store, GAsyncResult* result, gpointer current) {
            const CharPtr kept(static_cast<char*>(current));
            const StringsPtr found(webkit_user_content_filter_store_fetch_identifiers_finish(
                WEBKIT_USER_CONTENT_FILTER_STORE(store), result));
            for (char** one = found.get(); one && *one; ++one) {
                if (std::string_view(*one) == kept.get()) continue;
                // The engine wants to be asked how it went; a filter that stays does no harm.
                webkit_user_content_filter_store_remove(
                    WEBKIT_USER_CONTENT_FILTER_STORE(store), *one, nullptr,
                    [](GObject* from, GAsyncResult* removal, gpointer) {
                        webkit_user_content_filter_store_remove_finish(WEBKIT_USER_CONTENT_FILTER_STORE(from), removal,
                                                                       nullptr);
                    },
                    nullptr);
            }
        },
        g_strdup(filterIdentifier_.c_str()));
}

void WebEnvironment::whenReady(std::function<void()> action) {
    waiting_.push_back(std::move(action));
    proceed();
}

void WebEnvironment::proceed() {
    if (!ready()) return;
    for (const auto& action : std::exchange(waiting_, {})) action();
}

}  // namespace parvela
