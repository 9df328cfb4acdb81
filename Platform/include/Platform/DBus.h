#pragma once

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Task.h>

#include <functional>
#include <memory>
#include <string>

#include <gio/gio.h>

namespace parvela {

/// Owners for what GDBus hands out as numbers. Each takes its registration back when it goes; none of their callbacks
/// comes after that.
namespace dbus {

using Bus = Ref<GDBusConnection>;

/// The session's or the system's bus; empty when there is none. The program goes on when the bus ends.
Task<Bus> connect(GBusType type);

struct Address {
    std::string name;
    std::string path;
    std::string interface;
};

enum class Start { allowed, never };

/// The answer's values as a tuple; empty when the call failed or took longer than ten seconds. A floating `arguments`
/// is consumed. `start` tells whether the bus may start the program that answers.
Task<VariantPtr> call(Bus bus, Address address, std::string method, GVariant* arguments, Start start = Start::allowed);

/// Hears a signal of one sender.
class SignalSubscription {
public:
    using Handler = std::function<void(GVariant* values)>;

    SignalSubscription() = default;
    SignalSubscription(const Bus& bus, const Address& sender, const std::string& signal, Handler handler);
    SignalSubscription(SignalSubscription&&) noexcept = default;
    SignalSubscription& operator=(SignalSubscription&&) noexcept = default;
    ~SignalSubscription() = default;

private:
    struct Link;
    struct Ending {
        void operator()(Link* link) const noexcept;
    };
    std::unique_ptr<Link, Ending> link_;
};

/// Tells when a name gets and loses its owner; once soon after the start in any case.
class NameWatch {
public:
    /// `owner` is the unique name of the owner, empty when there is none.
    using Handler = std::function<void(const std::string& owner)>;

    NameWatch() = default;
    NameWatch(const Bus& bus, const std::string& name, Handler handler);
    NameWatch(NameWatch&&) noexcept = default;
    NameWatch& operator=(NameWatch&&) noexcept = default;
    ~NameWatch() = default;

private:
    struct Link;
    struct Ending {
        void operator()(Link* link) const noexcept;
    };
    std::unique_ptr<Link, Ending> link_;
};

/// An object that other programs may call. What they send is as untrusted as they are; GDBus has checked it against the
/// interface description only.
class ExportedObject {
public:
    struct Handlers {
        /// Must answer the invocation. `values` is the tuple of arguments.
        std::function<void(const std::string& method, GVariant* values, GDBusMethodInvocation* invocation)> call;
        /// A new, possibly floating value of the property's declared type.
        std::function<GVariant*(const std::string& property)> get;
    };

    ExportedObject() = default;
    /// Exports the first interface of the introspection XML. Empty (false) when the path is taken.
    ExportedObject(const Bus& bus, const std::string& path, const std::string& introspection, Handlers handlers);
    ExportedObject(ExportedObject&&) noexcept = default;
    ExportedObject& operator=(ExportedObject&&) noexcept = default;
    ~ExportedObject() = default;

    explicit operator bool() const noexcept { return link_ != nullptr; }

private:
    struct Link;
    struct Ending {
        void operator()(Link* link) const noexcept;
    };
    std::unique_ptr<Link, Ending> link_;
};

}  // namespace dbus

}  // namespace parvela
