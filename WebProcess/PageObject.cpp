#include "PageObject.h"

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/MessageGate.h>
#include <ParvelaKit/NativeBridge.h>

#include <cstring>
#include <string>
#include <utility>

namespace parvela {

namespace {

/// A page has no reason to post more, and the application parses every message on its main thread.
constexpr std::size_t largestBody = std::size_t{1} << 20;

/// How often held messages are looked at.
constexpr guint flushMilliseconds = 50;

/// The page that a function belongs to, and the gate for what it posts. Weak, since the function lives in the page's
/// own heap.
class PageLink {
public:
    explicit PageLink(WebKitWebPage* page) : gate_([this](const MessageGate::Message& message) { send(message); }) {
        g_weak_ref_init(&page_, page);
    }
    PageLink(const PageLink&) = delete;
    PageLink& operator=(const PageLink&) = delete;
    ~PageLink() {
        if (timer_ != 0) g_source_remove(timer_);
        g_weak_ref_clear(&page_);
    }

    void post(MessageGate::Message message) {
        gate_.post(std::move(message), g_get_monotonic_time());
        if (timer_ == 0 && gate_.isHolding()) timer_ = g_timeout_add(flushMilliseconds, flush, this);
    }

private:
    static gboolean flush(gpointer data) {
        auto* const self = static_cast<PageLink*>(data);
        self->gate_.flush(g_get_monotonic_time());
        if (self->gate_.isHolding()) return G_SOURCE_CONTINUE;
        self->timer_ = 0;
        return G_SOURCE_REMOVE;
    }

    void send(const MessageGate::Message& message) {
        const auto page = Ref<WebKitWebPage>::adopt(static_cast<WebKitWebPage*>(g_weak_ref_get(&page_)));
        if (!page) return;
        WebKitUserMessage* const posted =
            webkit_user_message_new(std::string(NativeBridge::handlerName).c_str(),
                                    g_variant_new("(ss)", message.address.c_str(), message.body.c_str()));
        webkit_web_page_send_message_to_view(page.get(), posted, nullptr, nullptr, nullptr);
    }

    GWeakRef page_{};
    MessageGate gate_;
    guint timer_ = 0;
};

/// The "type" of a message, empty when there is none. Read from the text, so that no getter of the page runs again.
std::string typeOf(JSCContext* context, const char* body) {
    const auto value = Ref<JSCValue>::adopt(jsc_value_new_from_json(context, body));
    if (!value || !jsc_value_is_object(value.get())) return {};
    const auto type = Ref<JSCValue>::adopt(jsc_value_object_get_property(value.get(), "type"));
    if (!type || !jsc_value_is_string(type.get())) return {};
    const CharPtr text(jsc_value_to_string(type.get()));
    return text ? text.get() : "";
}

/// The address of the document that `context` belongs to. Asked of the script's own realm rather than of the frame: a
/// function that outlives a navigation must not speak for the page that came after. Pages cannot redefine either
/// property.
std::string documentAddress(JSCContext* context) {
    const auto window = Ref<JSCValue>::adopt(jsc_context_get_global_object(context));
    const auto location = Ref<JSCValue>::adopt(jsc_value_object_get_property(window.get(), "location"));
    if (!location || !jsc_value_is_object(location.get())) return {};
    const auto href = Ref<JSCValue>::adopt(jsc_value_object_get_property(location.get(), "href"));
    if (!href || !jsc_value_is_string(href.get())) return {};
    const CharPtr text(jsc_value_to_string(href.get()));
    return text ? text.get() : "";
}

void postMessage(GPtrArray* arguments, gpointer userData) {
    if (arguments->len < 1) return;
    JSCContext* const context = jsc_context_get_current();
    if (!context) return;

    // Runs the page's own getters; what they throw stays set on the context and reaches the caller.
    const CharPtr body(jsc_value_to_json(static_cast<JSCValue*>(arguments->pdata[0]), 0));
    if (!body || std::strlen(body.get()) > largestBody) return;

    const std::string address = documentAddress(context);
    if (address.empty()) return;
    static_cast<PageLink*>(userData)->post({typeOf(context, body.get()), address, body.get()});
}

void defineConstant(JSCValue* object, const char* name, JSCValue* value) {
    jsc_value_object_define_property_data(object, name, JSC_VALUE_PROPERTY_ENUMERABLE, value);
}

}  // namespace

void installPageObject(WebKitWebPage* page, WebKitFrame* frame, WebKitScriptWorld* world) {
    const auto context = Ref<JSCContext>::adopt(webkit_frame_get_js_context_for_script_world(frame, world));
    const auto object = [&] { return Ref<JSCValue>::adopt(jsc_value_new_object(context.get(), nullptr, nullptr)); };

    const auto function = Ref<JSCValue>::adopt(jsc_value_new_function_variadic(
        context.get(), "postMessage", G_CALLBACK(postMessage), new PageLink(page),
        [](gpointer link) { delete static_cast<PageLink*>(link); }, G_TYPE_NONE));
    const auto handler = object();
    defineConstant(handler.get(), "postMessage", function.get());
    const auto handlers = object();
    defineConstant(handlers.get(), std::string(NativeBridge::handlerName).c_str(), handler.get());
    const auto webkit = object();
    defineConstant(webkit.get(), "messageHandlers", handlers.get());

    const auto window = Ref<JSCValue>::adopt(jsc_context_get_global_object(context.get()));
    defineConstant(window.get(), "webkit", webkit.get());
}

}  // namespace parvela
