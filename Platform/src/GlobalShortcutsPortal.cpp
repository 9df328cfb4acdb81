#include <Platform/DBus.h>
#include <Platform/GlobalShortcutsPortal.h>
#include <Platform/MainLoop.h>

#include <algorithm>
#include <iterator>
#include <random>
#include <string_view>
#include <utility>

#include <fmt/format.h>

namespace parvela {

namespace {

constexpr const char* portalName = "org.freedesktop.portal.Desktop";
constexpr const char* shortcutId = "quick-add";
/// A question to the user that was never asked, or never answered.
constexpr auto questionPatience = std::chrono::minutes(5);

const dbus::Address shortcuts{portalName, "/org/freedesktop/portal/desktop", "org.freedesktop.portal.GlobalShortcuts"};

std::string newToken() {
    std::random_device random;
    return fmt::format("parvela{:08x}{:08x}", random(), random());
}

/// The values of a portal's answer to a request; empty when it said no.
using Response = std::shared_ptr<VariantPtr>;

std::string textIn(const VariantPtr& dictionary, const char* key) {
    const char* text = nullptr;
    return g_variant_lookup(dictionary.get(), key, "&s", &text) ? text : "";
}

/// Names of keysyms without modifiers on the places of a US keyboard; letters and digits name themselves.
std::string keyName(std::uint32_t keyCode) {
    struct Name {
        std::uint32_t keyCode;
        const char* text;
    };
    constexpr Name names[] = {
        {0x24, "Return"}, {0x30, "Tab"},   {0x31, "space"},  {0x33, "BackSpace"}, {0x35, "Escape"},    {0x73, "Home"},
        {0x77, "End"},    {0x7B, "Left"},  {0x7C, "Right"},  {0x7D, "Down"},      {0x7E, "Up"},        {0x7A, "F1"},
        {0x78, "F2"},     {0x63, "F3"},    {0x76, "F4"},     {0x60, "F5"},        {0x61, "F6"},        {0x62, "F7"},
        {0x64, "F8"},     {0x65, "F9"},    {0x6D, "F10"},    {0x67, "F11"},       {0x6F, "F12"},       {0x1B, "minus"},
        {0x18, "equal"},  {0x2B, "comma"}, {0x2F, "period"}, {0x2C, "slash"},     {0x29, "semicolon"}, {0x32, "grave"},
    };
    const auto* const named = std::ranges::find(names, names + std::size(names), keyCode, &Name::keyCode);
    if (named != std::end(names)) return named->text;
    using namespace std::string_view_literals;
    constexpr std::string_view letters = "asdfhgzxcv\0bqweryt"sv;  // by key code
    if (keyCode < letters.size() && letters[keyCode] != '\0') return {letters[keyCode]};
    constexpr std::pair<std::uint32_t, char> others[] = {
        {0x12, '1'}, {0x13, '2'}, {0x14, '3'}, {0x15, '4'}, {0x16, '6'}, {0x17, '5'}, {0x19, '9'},
        {0x1A, '7'}, {0x1C, '8'}, {0x1D, '0'}, {0x1F, 'o'}, {0x20, 'u'}, {0x22, 'i'}, {0x23, 'p'},
        {0x25, 'l'}, {0x26, 'j'}, {0x28, 'k'}, {0x2D, 'n'}, {0x2E, 'm'}};
    for (const auto& [code, name] : others) {
        if (code == keyCode) return {name};
    }
    return {};
}

}  // namespace

class GlobalShortcutsPortal::Impl : public std::enable_shared_from_this<Impl> {
public:
    explicit Impl(GlobalShortcutsPortal& owner) : owner_(&owner) {}

    void close() {
        owner_ = nullptr;
        endSession();
    }

    void endSession() {
        ++generation_;
        activated_ = {};
        closed_ = {};
        desktop_ = {};
        if (!session_.empty()) closeSession(std::exchange(session_, {}));
    }

    static Task<Result<std::string, Problem>> bind(std::shared_ptr<Impl> self, HotKey key, std::string description) {
        self->endSession();
        const int generation = self->generation_;
        const auto trigger = GlobalShortcutsPortal::trigger(key);
        if (!trigger) co_return Failure(Problem::refused);
        auto connecting = dbus::connect(G_BUS_TYPE_SESSION);
        auto bus = co_await connecting;
        if (!bus) co_return Failure(Problem::unavailable);
        self->bus_ = std::move(bus);

        auto creating = createSession(self);
        auto session = co_await creating;
        if (!session) co_return Failure(session.error());
        if (self->generation_ != generation) {
            self->closeSession(std::move(*session));
            co_return Failure(Problem::refused);
        }
        self->session_ = std::move(*session);
        self->listen();

        auto binding = bindShortcut(self, *trigger, std::move(description));
        auto bound = co_await binding;
        if (!bound && self->generation_ == generation) self->endSession();
        co_return bound;
    }

private:
    void closeSession(std::string session) {
        dbus::call(bus_, {portalName, std::move(session), "org.freedesktop.portal.Session"}, "Close", nullptr,
                   dbus::Start::never)
            .detach();
    }

    static Task<Result<std::string, Problem>> createSession(std::shared_ptr<Impl> self) {
        const std::string token = newToken();
        GVariantBuilder options;
        g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
        g_variant_builder_add(&options, "{sv}", "handle_token", g_variant_new_string(token.c_str()));
        g_variant_builder_add(&options, "{sv}", "session_handle_token", g_variant_new_string(newToken().c_str()));
        auto asking = request(self, token, "CreateSession", g_variant_new("(a{sv})", &options));
        const auto answer = co_await asking;
        if (!answer) co_return Failure(answer.error());
        std::string session = textIn(**answer, "session_handle");
        if (!g_variant_is_object_path(session.c_str())) co_return Failure(Problem::unavailable);
        co_return session;
    }

    static Task<Result<std::string, Problem>> bindShortcut(std::shared_ptr<Impl> self, std::string trigger,
                                                           std::string description) {
        const std::string token = newToken();
        GVariantBuilder properties;
        g_variant_builder_init(&properties, G_VARIANT_TYPE_VARDICT);
        g_variant_builder_add(&properties, "{sv}", "description", g_variant_new_string(description.c_str()));
        g_variant_builder_add(&properties, "{sv}", "preferred_trigger", g_variant_new_string(trigger.c_str()));
        GVariantBuilder list;
        g_variant_builder_init(&list, G_VARIANT_TYPE("a(sa{sv})"));
        g_variant_builder_add(&list, "(sa{sv})", shortcutId, &properties);
        GVariantBuilder options;
        g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
        g_variant_builder_add(&options, "{sv}", "handle_token", g_variant_new_string(token.c_str()));
        GVariant* const arguments = g_variant_new("(oa(sa{sv})sa{sv})", self->session_.c_str(), &list, "", &options);
        auto asking = request(self, token, "BindShortcuts", arguments);
        const auto answer = co_await asking;
        if (!answer) co_return Failure(answer.error());

        VariantPtr bound(g_variant_lookup_value((**answer).get(), "shortcuts", G_VARIANT_TYPE("a(sa{sv})")));
        if (!bound || g_variant_n_children(bound.get()) == 0) co_return Failure(Problem::refused);
        const VariantPtr first(g_variant_get_child_value(bound.get(), 0));
        const VariantPtr details(g_variant_get_child_value(first.get(), 1));
        co_return textIn(details, "trigger_description");
    }

    /// A portal's call and the response signal that follows it.
    static Task<Result<Response, Problem>> request(std::shared_ptr<Impl> self, std::string token, std::string method,
                                                   GVariant* arguments) {
        std::string sender = g_dbus_connection_get_unique_name(self->bus_.get()) + 1;  // without ":"
        std::ranges::replace(sender, '.', '_');
        const dbus::Address handle{portalName,
                                   fmt::format("/org/freedesktop/portal/desktop/request/{}/{}", sender, token),
                                   "org.freedesktop.portal.Request"};
        const Deferred<Response> response;
        // Before the call, or the response may come first.
        const dbus::SignalSubscription answered(self->bus_, handle, "Response", [response](GVariant* values) {
            guint32 code = 1;
            VariantPtr results;
            if (g_variant_is_of_type(values, G_VARIANT_TYPE("(ua{sv})")))
                g_variant_get(values, "(u@a{sv})", &code, results.out());
            response.resolve(code == 0 ? std::make_shared<VariantPtr>(std::move(results)) : nullptr);
        });
        auto calling = dbus::call(self->bus_, shortcuts, std::move(method), arguments);
        const VariantPtr accepted = co_await calling;
        if (!accepted) co_return Failure(Problem::unavailable);
        const MainLoopTimer patience(questionPatience, [response] { response.resolve(nullptr); });
        auto result = co_await response;
        if (!result) co_return Failure(Problem::refused);
        co_return result;
    }

    void listen() {
        const std::weak_ptr<Impl> weak = weak_from_this();
        activated_ = dbus::SignalSubscription(bus_, shortcuts, "Activated", [weak](GVariant* values) {
            if (const auto self = weak.lock()) self->activated(values);
        });
        const dbus::Address session{portalName, session_, "org.freedesktop.portal.Session"};
        closed_ = dbus::SignalSubscription(bus_, session, "Closed", [weak](GVariant*) {
            if (const auto self = weak.lock()) self->revoked();
        });
        // A portal that ends says nothing, and the next one knows nothing of the session.
        desktop_ = dbus::NameWatch(bus_, portalName, [weak, known = std::string()](const std::string& owner) mutable {
            const auto self = weak.lock();
            if (self && !known.empty() && owner != known) self->revoked();
            known = owner;
        });
    }

    void revoked() {
        // Tells once: the session may be closed by a portal that then ends.
        if (std::exchange(session_, {}).empty()) return;
        if (owner_ && owner_->onRevoked) owner_->onRevoked();
    }

    void activated(GVariant* values) {
        if (!g_variant_is_of_type(values, G_VARIANT_TYPE("(osta{sv})"))) return;
        const char* session = nullptr;
        const char* id = nullptr;
        VariantPtr options;
        g_variant_get(values, "(&o&st@a{sv})", &session, &id, nullptr, options.out());
        if (session != session_ || std::string_view(id) != shortcutId) return;
        const std::string token = textIn(options, "activation_token");
        if (owner_ && owner_->onActivated) owner_->onActivated(token.empty() ? std::nullopt : std::optional(token));
    }

    GlobalShortcutsPortal* owner_;
    dbus::Bus bus_;
    std::string session_;
    /// Tells an answer to an earlier wish from one to the latest.
    int generation_ = 0;
    dbus::SignalSubscription activated_, closed_;
    dbus::NameWatch desktop_;
};

GlobalShortcutsPortal::GlobalShortcutsPortal() : impl_(std::make_shared<Impl>(*this)) {
}

GlobalShortcutsPortal::~GlobalShortcutsPortal() {
    impl_->close();
}

Task<Result<std::string, GlobalShortcutsPortal::Problem>> GlobalShortcutsPortal::bind(HotKey key,
                                                                                      std::string description) {
    return Impl::bind(impl_, key, std::move(description));
}

Task<bool> GlobalShortcutsPortal::isOffered() {
    auto connecting = dbus::connect(G_BUS_TYPE_SESSION);
    const auto bus = co_await connecting;
    if (!bus) co_return false;
    const dbus::Address properties{shortcuts.name, shortcuts.path, "org.freedesktop.DBus.Properties"};
    auto asking = dbus::call(bus, properties, "Get", g_variant_new("(ss)", shortcuts.interface.c_str(), "version"));
    const VariantPtr version = co_await asking;
    co_return static_cast<bool>(version);
}

void GlobalShortcutsPortal::unbind() {
    impl_->endSession();
}

std::optional<std::string> GlobalShortcutsPortal::trigger(HotKey key) {
    std::string text;
    if (key.modifiers & KeyModifiers::control) text += "CTRL+";
    if (key.modifiers & KeyModifiers::option) text += "ALT+";
    if (key.modifiers & KeyModifiers::shift) text += "SHIFT+";
    if (key.modifiers & KeyModifiers::command) text += "LOGO+";
    const std::string name = keyName(key.keyCode);
    return name.empty() ? std::nullopt : std::optional(text + name);
}

}  // namespace parvela
