#pragma once

#include <memory>
#include <type_traits>
#include <utility>

#include <glib-object.h>

/// Owners for GLib's reference-counted and heap values. Header only: whoever includes it links gobject-2.0.
namespace parvela {

/// A strong reference to a GObject. Copies share the object.
template <class T>
class Ref {
public:
    Ref() noexcept = default;
    Ref(std::nullptr_t) noexcept {}
    Ref(const Ref& other) noexcept : object_(other.object_) { acquire(); }
    Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    Ref& operator=(Ref other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~Ref() {
        if (object_) g_object_unref(object_);
    }

    /// Takes over a reference that the caller owns ("transfer full").
    static Ref adopt(T* object) noexcept { return Ref(object); }
    /// Adds a reference to an object that somebody else owns ("transfer none").
    static Ref ref(T* object) noexcept {
        Ref result(object);
        result.acquire();
        return result;
    }
    /// Owns an object that may still be floating, such as a new widget.
    static Ref sink(T* object) noexcept {
        if (object) g_object_ref_sink(object);
        return Ref(object);
    }

    T* get() const noexcept { return object_; }
    /// The same object under another of its types, which the caller vouches for.
    template <class U>
    U* as() const noexcept {
        return reinterpret_cast<U*>(object_);
    }
    /// Gives the reference away; this becomes empty.
    [[nodiscard]] T* release() noexcept { return std::exchange(object_, nullptr); }
    explicit operator bool() const noexcept { return object_ != nullptr; }
    bool operator==(const Ref&) const noexcept = default;

private:
    explicit Ref(T* object) noexcept : object_(object) {}
    void acquire() noexcept {
        if (object_) g_object_ref(object_);
    }

    T* object_ = nullptr;
};

/// Sole owner of a value that `Free` releases.
template <class T, auto Free>
class GLibPtr {
public:
    GLibPtr() noexcept = default;
    explicit GLibPtr(T* value) noexcept : value_(value) {}
    GLibPtr(GLibPtr&& other) noexcept : value_(other.release()) {}
    GLibPtr& operator=(GLibPtr&& other) noexcept {
        reset(other.release());
        return *this;
    }
    ~GLibPtr() { reset(); }

    T* get() const noexcept { return value_; }
    T* operator->() const noexcept { return value_; }
    explicit operator bool() const noexcept { return value_ != nullptr; }
    [[nodiscard]] T* release() noexcept { return std::exchange(value_, nullptr); }
    void reset(T* value = nullptr) noexcept {
        if (T* old = std::exchange(value_, value)) Free(old);
    }
    /// Where a C function writes its result, such as a GError**. Releases what was held.
    [[nodiscard]] T** out() noexcept {
        reset();
        return &value_;
    }

private:
    T* value_ = nullptr;
};

using BytesPtr = GLibPtr<GBytes, g_bytes_unref>;
using CharPtr = GLibPtr<char, g_free>;
using ErrorPtr = GLibPtr<GError, g_error_free>;
using StringsPtr = GLibPtr<char*, g_strfreev>;
using VariantPtr = GLibPtr<GVariant, g_variant_unref>;

/// Keeps one signal handler connected; destroying it disconnects. May outlive the object.
class Connection {
public:
    Connection() noexcept = default;
    Connection(gpointer instance, gulong handler) : link_(std::make_unique<Link>(instance, handler)) {}
    Connection(Connection&&) noexcept = default;
    Connection& operator=(Connection&& other) noexcept {
        disconnect();
        link_ = std::move(other.link_);
        return *this;
    }
    ~Connection() { disconnect(); }

    void disconnect() noexcept { link_.reset(); }
    explicit operator bool() const noexcept { return link_ != nullptr; }

private:
    struct Link {
        Link(gpointer instance, gulong id) : handler(id) { g_weak_ref_init(&object, instance); }
        Link(const Link&) = delete;
        Link& operator=(const Link&) = delete;
        ~Link() {
            if (const auto alive = Ref<GObject>::adopt(static_cast<GObject*>(g_weak_ref_get(&object)))) {
                // A handler may already be gone: objects drop theirs while they are being disposed of.
                if (g_signal_handler_is_connected(alive.get(), handler)) {
                    g_signal_handler_disconnect(alive.get(), handler);
                }
            }
            g_weak_ref_clear(&object);
        }

        GWeakRef object{};
        gulong handler;
    };

    std::unique_ptr<Link> link_;
};

namespace detail {

template <class Signature>
struct SignalTrampoline;

template <class Result, class... Arguments>
struct SignalTrampoline<Result(Arguments...)> {
    template <class Handler>
    static Result call(Arguments... arguments, gpointer handler) {
        return (*static_cast<Handler*>(handler))(arguments...);
    }
};

}  // namespace detail

/// Calls `handler` at every emission of `signal`, until the Connection goes. `Signature` is the signal's C signature
/// without the user data:
///
///     connection_ = connect<void(GtkButton*)>(button, "clicked", [this](GtkButton*) { commit(); });
template <class Signature, class Handler>
[[nodiscard]] Connection connect(gpointer instance, const char* signal, Handler handler) {
    using Stored = std::decay_t<Handler>;
    auto* const stored = new Stored(std::move(handler));
    auto* const trampoline = &detail::SignalTrampoline<Signature>::template call<Stored>;
    const gulong id = g_signal_connect_data(
        instance, signal, reinterpret_cast<GCallback>(trampoline), stored,
        [](gpointer data, GClosure*) { delete static_cast<Stored*>(data); }, GConnectFlags{});
    return Connection(instance, id);
}

}  // namespace parvela
