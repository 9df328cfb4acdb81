#include "AsyncCall.h"

#include <Platform/DBus.h>

#include <utility>

namespace parvela::dbus {

namespace {

constexpr int callTimeout = 10'000;  // milliseconds

using NodePtr = GLibPtr<GDBusNodeInfo, g_dbus_node_info_unref>;

template <class T>
void destroyLater(gpointer data) {
    delete static_cast<T*>(data);
}

}  // namespace

Task<Bus> connect(GBusType type) {
    const auto waiting =
        startAsync([type](GAsyncReadyCallback done, gpointer data) { g_bus_get(type, nullptr, done, data); });
    const auto result = co_await waiting;
    auto bus = Bus::adopt(g_bus_get_finish(result.get(), nullptr));
    if (bus) g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
    co_return bus;
}

Task<VariantPtr> call(Bus bus, Address address, std::string method, GVariant* arguments, Start start) {
    const auto flags = start == Start::allowed ? G_DBUS_CALL_FLAGS_NONE : G_DBUS_CALL_FLAGS_NO_AUTO_START;
    const auto waiting = startAsync([&](GAsyncReadyCallback done, gpointer data) {
        g_dbus_connection_call(bus.get(), address.name.c_str(), address.path.c_str(), address.interface.c_str(),
                               method.c_str(), arguments, nullptr, flags, callTimeout, nullptr, done, data);
    });
    const auto result = co_await waiting;
    VariantPtr answer(g_dbus_connection_call_finish(bus.get(), result.get(), nullptr));
    co_return answer;
}

// GDBus may still deliver what was queued before a registration ended; `alive` keeps it from the handler.

struct SignalSubscription::Link {
    Bus bus;
    guint id = 0;
    std::shared_ptr<Handler> handler;
};

SignalSubscription::SignalSubscription(const Bus& bus, const Address& sender, const std::string& signal,
                                       Handler handler) {
    using Weak = std::weak_ptr<Handler>;
    auto shared = std::make_shared<Handler>(std::move(handler));
    const guint id = g_dbus_connection_signal_subscribe(
        bus.get(), sender.name.c_str(), sender.interface.c_str(), signal.c_str(), sender.path.c_str(), nullptr,
        G_DBUS_SIGNAL_FLAGS_NONE,
        [](GDBusConnection*, const char*, const char*, const char*, const char*, GVariant* values, gpointer data) {
            if (const auto alive = static_cast<Weak*>(data)->lock()) (*alive)(values);
        },
        new Weak(shared), destroyLater<Weak>);
    link_.reset(new Link{bus, id, std::move(shared)});
}

void SignalSubscription::Ending::operator()(Link* link) const noexcept {
    g_dbus_connection_signal_unsubscribe(link->bus.get(), link->id);
    delete link;
}

struct NameWatch::Link {
    guint id = 0;
    std::shared_ptr<Handler> handler;
};

NameWatch::NameWatch(const Bus& bus, const std::string& name, Handler handler) {
    using Weak = std::weak_ptr<Handler>;
    auto shared = std::make_shared<Handler>(std::move(handler));
    const guint id = g_bus_watch_name_on_connection(
        bus.get(), name.c_str(), G_BUS_NAME_WATCHER_FLAGS_NONE,
        [](GDBusConnection*, const char*, const char* owner, gpointer data) {
            if (const auto alive = static_cast<Weak*>(data)->lock()) (*alive)(owner);
        },
        [](GDBusConnection*, const char*, gpointer data) {
            if (const auto alive = static_cast<Weak*>(data)->lock()) (*alive)(std::string());
        },
        new Weak(shared), destroyLater<Weak>);
    link_.reset(new Link{id, std::move(shared)});
}

void NameWatch::Ending::operator()(Link* link) const noexcept {
    g_bus_unwatch_name(link->id);
    delete link;
}

struct ExportedObject::Link {
    Bus bus;
    guint id = 0;
    std::shared_ptr<Handlers> handlers;
};

ExportedObject::ExportedObject(const Bus& bus, const std::string& path, const std::string& introspection,
                               Handlers handlers) {
    using Weak = std::weak_ptr<Handlers>;
    static const GDBusInterfaceVTable table = {
        [](GDBusConnection*, const char*, const char*, const char*, const char* method, GVariant* values,
           GDBusMethodInvocation* invocation, gpointer data) {
            if (const auto alive = static_cast<Weak*>(data)->lock()) {
                alive->call(method, values, invocation);
            } else {
                g_dbus_method_invocation_return_error_literal(invocation, G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_OBJECT,
                                                              "Gone");
            }
        },
        [](GDBusConnection*, const char*, const char*, const char*, const char* property, GError** error,
           gpointer data) -> GVariant* {
            if (const auto alive = static_cast<Weak*>(data)->lock()) return alive->get(property);
            g_set_error_literal(error, G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_OBJECT, "Gone");
            return nullptr;
        },
        nullptr,
        {}};
    const NodePtr node(g_dbus_node_info_new_for_xml(introspection.c_str(), nullptr));
    if (!node || !node->interfaces || !node->interfaces[0]) return;
    auto shared = std::make_shared<Handlers>(std::move(handlers));
    const guint id = g_dbus_connection_register_object(bus.get(), path.c_str(), node->interfaces[0], &table,
                                                       new Weak(shared), destroyLater<Weak>, nullptr);
    if (id != 0) link_.reset(new Link{bus, id, std::move(shared)});
}

void ExportedObject::Ending::operator()(Link* link) const noexcept {
    g_dbus_connection_unregister_object(link->bus.get(), link->id);
    delete link;
}

}  // namespace parvela::dbus
