#include <ParvelaKit/AsyncMutex.h>
#include <ParvelaKit/Text.h>
#include <Platform/DBus.h>
#include <Platform/NotificationService.h>

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

namespace parvela {

namespace {

constexpr std::size_t longestTitle = 200;
constexpr std::size_t longestBody = 2000;

const dbus::Address service{"org.freedesktop.Notifications", "/org/freedesktop/Notifications",
                            "org.freedesktop.Notifications"};

std::string shortened(const std::string& text, std::size_t length) {
    const std::string valid = toUtf8(toUtf16(text));
    const std::string_view start = firstCharacters(valid, length);
    return std::string(start) + (start.size() < valid.size() ? "…" : "");
}

struct Capabilities {
    bool actions = false;
    bool body = false;
    bool markup = false;
};

Capabilities capabilitiesFrom(GVariant* answer) {
    Capabilities result;
    if (!g_variant_is_of_type(answer, G_VARIANT_TYPE("(as)"))) return result;
    StringsPtr names;
    g_variant_get(answer, "(^as)", names.out());
    const auto has = [&names](const char* name) { return g_strv_contains(names.get(), name) != FALSE; };
    result.actions = has("actions");
    result.body = has("body");
    result.markup = has("body-markup");
    return result;
}

}  // namespace

class NotificationService::Impl : public std::enable_shared_from_this<Impl> {
public:
    Impl(NotificationService& owner, Program program) : owner_(&owner), program_(std::move(program)) {}

    void close() { owner_ = nullptr; }

    static Task<void> post(std::shared_ptr<Impl> self, DesktopNotification notification) {
        // One after the other: replacing needs the number that the service gave the one before.
        auto waiting = self->posting_.lock();
        const auto turn = co_await waiting;
        auto preparing = prepare(self);
        const bool ready = co_await preparing;
        if (!ready) co_return;
        const auto earlier = self->shown_.find(notification.identifier);
        const guint32 replaced = earlier == self->shown_.end() ? 0 : earlier->second;
        auto calling = dbus::call(self->bus_, service, "Notify", self->arguments(notification, replaced));
        const VariantPtr answer = co_await calling;
        if (!answer || !g_variant_is_of_type(answer.get(), G_VARIANT_TYPE("(u)"))) co_return;
        guint32 number = 0;
        g_variant_get(answer.get(), "(u)", &number);
        self->shown_[notification.identifier] = number;
    }

    static Task<void> withdraw(std::shared_ptr<Impl> self, std::string identifier) {
        auto waiting = self->posting_.lock();
        const auto turn = co_await waiting;
        const auto shown = self->shown_.extract(identifier);
        if (!shown || !self->bus_) co_return;
        dbus::call(self->bus_, service, "CloseNotification", g_variant_new("(u)", shown.mapped()), dbus::Start::never)
            .detach();
    }

private:
    /// False when there is nobody to show anything.
    static Task<bool> prepare(std::shared_ptr<Impl> self) {
        if (!self->bus_) {
            auto connecting = dbus::connect(G_BUS_TYPE_SESSION);
            auto bus = co_await connecting;
            self->bus_ = std::move(bus);
            if (!self->bus_) co_return false;
            self->listen();
        }
        if (self->capabilities_) co_return true;
        // The bus starts the service when it can.
        auto asking = dbus::call(self->bus_, service, "GetCapabilities", nullptr);
        const VariantPtr answer = co_await asking;
        if (!answer) co_return false;
        self->capabilities_ = capabilitiesFrom(answer.get());
        co_return true;
    }

    void listen() {
        const auto handler = [weak = weak_from_this()](void (Impl::*method)(GVariant*)) {
            return [weak, method](GVariant* values) {
                if (const auto self = weak.lock()) (self.get()->*method)(values);
            };
        };
        activated_ = dbus::SignalSubscription(bus_, service, "ActionInvoked", handler(&Impl::actionInvoked));
        closed_ = dbus::SignalSubscription(bus_, service, "NotificationClosed", handler(&Impl::notificationClosed));
        token_ = dbus::SignalSubscription(bus_, service, "ActivationToken", handler(&Impl::activationToken));
        watch_ = dbus::NameWatch(bus_, service.name, [weak = weak_from_this()](const std::string& owner) {
            const auto self = weak.lock();
            if (!self || self->serviceOwner_ == owner) return;
            // Another service knows neither our numbers nor what the one before could do.
            if (!self->serviceOwner_.empty()) {
                self->shown_.clear();
                self->capabilities_.reset();
            }
            self->serviceOwner_ = owner;
        });
    }

    GVariant* arguments(const DesktopNotification& notification, guint32 replaced) const {
        std::string body = capabilities_->body ? shortened(notification.body, longestBody) : std::string();
        if (capabilities_->markup) body = CharPtr(g_markup_escape_text(body.c_str(), -1)).get();
        GVariantBuilder actions;
        g_variant_builder_init(&actions, G_VARIANT_TYPE_STRING_ARRAY);
        if (capabilities_->actions) {
            g_variant_builder_add(&actions, "s", "default");
            g_variant_builder_add(&actions, "s", "Open");
        }
        GVariantBuilder hints;
        g_variant_builder_init(&hints, G_VARIANT_TYPE_VARDICT);
        g_variant_builder_add(&hints, "{sv}", "desktop-entry", g_variant_new_string(program_.desktopEntry.c_str()));
        g_variant_builder_add(&hints, "{sv}", "urgency", g_variant_new_byte(1));
        return g_variant_new("(susssasa{sv}i)", program_.name.c_str(), replaced, program_.desktopEntry.c_str(),
                             shortened(notification.title, longestTitle).c_str(), body.c_str(), &actions, &hints, -1);
    }

    std::optional<std::string> identifierOf(guint32 number) const {
        const auto found = std::ranges::find(shown_, number, [](const auto& entry) { return entry.second; });
        return found == shown_.end() ? std::nullopt : std::optional(found->first);
    }

    void actionInvoked(GVariant* values) {
        if (!g_variant_is_of_type(values, G_VARIANT_TYPE("(us)"))) return;
        guint32 number = 0;
        const char* action = nullptr;
        g_variant_get(values, "(u&s)", &number, &action);
        const auto identifier = identifierOf(number);
        if (!identifier || std::string_view(action) != "default") return;
        const auto token = tokenNumber_ == number ? std::exchange(activationToken_, std::nullopt) : std::nullopt;
        if (owner_ && owner_->onActivated) owner_->onActivated(*identifier, token);
    }

    void activationToken(GVariant* values) {
        if (!g_variant_is_of_type(values, G_VARIANT_TYPE("(us)"))) return;
        const char* text = nullptr;
        g_variant_get(values, "(u&s)", &tokenNumber_, &text);
        activationToken_ = text;
    }

    void notificationClosed(GVariant* values) {
        if (!g_variant_is_of_type(values, G_VARIANT_TYPE("(uu)"))) return;
        guint32 number = 0;
        g_variant_get(values, "(uu)", &number, nullptr);
        std::erase_if(shown_, [number](const auto& entry) { return entry.second == number; });
    }

    NotificationService* owner_;
    Program program_;
    AsyncMutex posting_;
    dbus::Bus bus_;
    std::string serviceOwner_;
    std::optional<Capabilities> capabilities_;
    /// The service's number of each notification that may still be shown.
    std::map<std::string, guint32> shown_;
    guint32 tokenNumber_ = 0;
    std::optional<std::string> activationToken_;
    dbus::SignalSubscription activated_, closed_, token_;
    dbus::NameWatch watch_;
};

NotificationService::NotificationService(Program program) : impl_(std::make_shared<Impl>(*this, std::move(program))) {
}

NotificationService::~NotificationService() {
    impl_->close();
}

void NotificationService::post(DesktopNotification notification) {
    Impl::post(impl_, std::move(notification)).detach();
}

void NotificationService::withdraw(const std::string& identifier) {
    Impl::withdraw(impl_, identifier).detach();
}

}  // namespace parvela
