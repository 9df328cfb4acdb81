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

const dbus::Address busDriver{"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus"};

using SchemaPtr = GLibPtr<GSettingsSchema, g_settings_schema_unref>;

/// Where GNOME keeps what the user decided about a program's notifications.
std::string gnomePathOf(const std::string& desktopEntry) {
    std::string name;
    for (const char c : desktopEntry) name += g_ascii_isalnum(c) ? g_ascii_tolower(c) : '-';
    return "/org/gnome/desktop/notifications/application/" + name + "/";
}

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

    static Task<void> start(std::shared_ptr<Impl> self) {
        auto waiting = self->posting_.lock();
        const auto turn = co_await waiting;
        auto connecting = dbus::connect(G_BUS_TYPE_SESSION);
        auto bus = co_await connecting;
        if (!self->owner_) co_return;
        if (!bus) {
            self->access.set(NotificationAccess::missing);
            co_return;
        }
        self->bus_ = std::move(bus);
        self->listen();
    }

    void close() {
        owner_ = nullptr;
        if (!bus_) return;
        for (const auto& [identifier, number] : shown_) {
            dbus::call(bus_, service, "CloseNotification", g_variant_new("(u)", number), dbus::Start::never).detach();
        }
        // The process may be at its end.
        if (!std::exchange(shown_, {}).empty()) g_dbus_connection_flush_sync(bus_.get(), nullptr, nullptr);
    }

    static Task<void> post(std::shared_ptr<Impl> self, DesktopNotification notification) {
        // One after the other: replacing needs the number that the service gave the one before.
        auto waiting = self->posting_.lock();
        const auto turn = co_await waiting;
        auto preparing = prepare(self);
        const bool ready = co_await preparing;
        if (!ready) {
            if (self->owner_ && self->owner_->onDropped) self->owner_->onDropped(notification);
            co_return;
        }
        const auto earlier = self->shown_.find(notification.identifier);
        const guint32 replaced = earlier == self->shown_.end() ? 0 : earlier->second;
        auto calling = dbus::call(self->bus_, service, "Notify", self->arguments(notification, replaced));
        const VariantPtr answer = co_await calling;
        if (!answer || !g_variant_is_of_type(answer.get(), G_VARIANT_TYPE("(u)"))) {
            if (self->owner_ && self->owner_->onDropped) self->owner_->onDropped(notification);
            co_return;
        }
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

    Observable<NotificationAccess> access{NotificationAccess::unknown};

private:
    /// False when there is nobody to show anything.
    static Task<bool> prepare(std::shared_ptr<Impl> self) {
        if (!self->bus_ || !self->owner_) co_return false;
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
                self->capabilities_.reset();
                for (const auto& [identifier, number] : std::exchange(self->shown_, {})) self->tellClosed(identifier);
            }
            self->serviceOwner_ = owner;
            readAccess(self).detach();
        });
        readAccess(weak_from_this().lock()).detach();
    }

    static Task<void> readAccess(std::shared_ptr<Impl> self) {
        const auto reading = ++self->accessReadings_;
        auto finding = findAccess(self);
        const auto found = co_await finding;
        if (reading == self->accessReadings_) self->access.set(found);
    }

    static Task<NotificationAccess> findAccess(std::shared_ptr<Impl> self) {
        // Looking must not start the service.
        auto asking = dbus::call(self->bus_, service, "GetServerInformation", nullptr, dbus::Start::never);
        const VariantPtr information = co_await asking;
        if (information && g_variant_is_of_type(information.get(), G_VARIANT_TYPE("(ssss)"))) {
            const char* name = nullptr;
            g_variant_get(information.get(), "(&s&s&s&s)", &name, nullptr, nullptr, nullptr);
            const bool switchedOff = std::string_view(name) == "gnome-shell" && self->isSwitchedOffInGnome();
            co_return switchedOff ? NotificationAccess::switchedOff : NotificationAccess::available;
        }
        auto listing = dbus::call(self->bus_, busDriver, "ListActivatableNames", nullptr);
        const VariantPtr names = co_await listing;
        if (!names || !g_variant_is_of_type(names.get(), G_VARIANT_TYPE("(as)"))) co_return NotificationAccess::missing;
        StringsPtr activatable;
        g_variant_get(names.get(), "(^as)", activatable.out());
        co_return g_strv_contains(activatable.get(), service.name.c_str()) ? NotificationAccess::available
                                                                           : NotificationAccess::missing;
    }

    bool isSwitchedOffInGnome() {
        if (!gnomeSettings_) {
            GSettingsSchemaSource* const schemas = g_settings_schema_source_get_default();
            constexpr const char* name = "org.gnome.desktop.notifications.application";
            const SchemaPtr schema(schemas ? g_settings_schema_source_lookup(schemas, name, TRUE) : nullptr);
            if (!schema || !g_settings_schema_has_key(schema.get(), "enable")) return false;
            gnomeSettings_ =
                Ref<GSettings>::adopt(g_settings_new_with_path(name, gnomePathOf(program_.desktopEntry).c_str()));
            gnomeChanged_ = connect<void(GSettings*, const char*)>(gnomeSettings_.get(), "changed::enable",
                                                                   [weak = weak_from_this()](GSettings*, const char*) {
                                                                       if (const auto self = weak.lock())
                                                                           readAccess(self).detach();
                                                                   });
        }
        return !g_settings_get_boolean(gnomeSettings_.get(), "enable");
    }

    void tellClosed(const std::string& identifier) const {
        if (owner_ && owner_->onClosed) owner_->onClosed(identifier);
    }

    GVariant* arguments(const DesktopNotification& notification, guint32 replaced) const {
        std::string body = capabilities_->body ? shortened(notification.body, longestBody) : std::string();
        if (capabilities_->markup) body = CharPtr(g_markup_escape_text(body.c_str(), -1)).get();
        GVariantBuilder actions;
        g_variant_builder_init(&actions, G_VARIANT_TYPE_STRING_ARRAY);
        if (capabilities_->actions && notification.click == DesktopNotification::Click::opens) {
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
        const auto identifier = identifierOf(number);
        if (!identifier) return;
        shown_.erase(*identifier);
        tellClosed(*identifier);
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
    std::uint64_t accessReadings_ = 0;
    Ref<GSettings> gnomeSettings_;
    Connection gnomeChanged_;
};

NotificationService::NotificationService(Program program) : impl_(std::make_shared<Impl>(*this, std::move(program))) {
    Impl::start(impl_).detach();
}

NotificationService::~NotificationService() {
    impl_->close();
}

const Observable<NotificationAccess>& NotificationService::access() const {
    return impl_->access;
}

void NotificationService::post(DesktopNotification notification) {
    Impl::post(impl_, std::move(notification)).detach();
}

void NotificationService::withdraw(const std::string& identifier) {
    Impl::withdraw(impl_, identifier).detach();
}

}  // namespace parvela
