#pragma once

#include "Web/SpellChecking.h"

#include <ParvelaKit/GLibPtr.h>
#include <Platform/XdgPaths.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <webkit/webkit.h>

namespace parvela {

/// What all web views share: WebKit's context with our web-process extension, one persistent network session, one user
/// content manager with the native info script and the navigation filter, and one set of settings.
///
/// A view may be made at any time, but no page may load before ready(): until then neither the filter, which keeps
/// foreign pages out of main frames, nor the script is in place.
class WebEnvironment {
public:
    explicit WebEnvironment(const XdgPaths& paths);
    WebEnvironment(const WebEnvironment&) = delete;
    WebEnvironment& operator=(const WebEnvironment&) = delete;
    ~WebEnvironment();

    WebKitWebContext* context() const noexcept { return context_.get(); }
    WebKitNetworkSession* session() const noexcept { return session_.get(); }

    /// A new view with everything shared. `related` is the view that asked for it, none for a view of its own; they
    /// then share a web process.
    Ref<WebKitWebView> makeView(WebKitWebView* related) const;

    /// For all pages, also those that are open. Reads the dictionaries at once.
    void setSpellChecking(const SpellChecking& checking);

    /// The script that every page finds done at document start. Pages already open keep theirs.
    void setNativeInfoScript(const std::string& source);

    /// The content blocker rules (WebKit's JSON form) for all pages. Compiled only when this machine has not compiled
    /// the same rules before. Pages wait until they are in force.
    void setContentFilter(std::string rules);

    /// Both are in place.
    bool ready() const noexcept { return hasScript_ && filterInForce_; }
    /// Calls `action` once pages may load: now, or later. `action` must hold no raw pointer that may dangle.
    void whenReady(std::function<void()> action);

    /// Told in one English sentence why pages will never load, should that be so.
    void onFailure(std::function<void(const std::string&)> handler) { onFailure_ = std::move(handler); }

private:
    using FilterPtr = GLibPtr<WebKitUserContentFilter, webkit_user_content_filter_unref>;
    struct FilterRequest;

    static void filterLoaded(GObject* store, GAsyncResult* result, gpointer request);
    static void filterCompiled(GObject* store, GAsyncResult* result, gpointer request);
    void adopt(FilterPtr filter);
    void removeStaleFilters();
    void proceed();

    Ref<WebKitWebContext> context_;
    Ref<WebKitNetworkSession> session_;
    Ref<WebKitUserContentManager> content_;
    Ref<WebKitUserContentFilterStore> filters_;
    Ref<WebKitSettings> settings_;
    Ref<GCancellable> cancellable_;
    Connection extensionsConnection_;
    std::string filterIdentifier_;
    FilterPtr filter_;
    bool filterInForce_ = false;
    bool hasScript_ = false;
    std::vector<std::function<void()>> waiting_;
    std::function<void(const std::string&)> onFailure_;
};

}  // namespace parvela
