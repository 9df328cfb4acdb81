#include <Platform/DBus.h>
#include <Platform/LauncherBadge.h>
#include <Platform/MainLoop.h>

#include <chrono>
#include <utility>

#include <fmt/format.h>

namespace parvela {

namespace {

/// For docks that start together with the program.
constexpr auto repeatAfter = std::chrono::seconds(1);

/// Any path does; this is the one that other programs make (Bernstein's hash).
std::string pathOf(const std::string& uri) {
    return fmt::format("/com/canonical/unity/launcherentry/{}", g_str_hash(uri.c_str()));
}

}  // namespace

class LauncherBadge::Impl : public std::enable_shared_from_this<Impl> {
public:
    explicit Impl(const std::string& desktopEntry) : uri_("application://" + desktopEntry + ".desktop") {}

    static Task<void> start(std::shared_ptr<Impl> self) {
        auto connecting = dbus::connect(G_BUS_TYPE_SESSION);
        auto bus = co_await connecting;
        self->bus_ = std::move(bus);
        if (self->isShown()) self->announce();
    }

    void setCount(std::int64_t count) {
        if (std::exchange(count_, count) != count) announce();
    }

    void setMenu(const std::string& objectPath) {
        if (std::exchange(menu_, objectPath) != objectPath) announce();
    }

    void close() {
        again_.reset();
        if (!bus_ || !isShown()) return;
        count_ = 0;
        menu_.clear();
        say();
        // The process may be at its end.
        g_dbus_connection_flush_sync(bus_.get(), nullptr, nullptr);
    }

private:
    bool isShown() const { return count_ > 0 || !menu_.empty(); }

    void announce() {
        say();
        again_ = MainLoopTimer(repeatAfter, [weak = weak_from_this()] {
            if (const auto self = weak.lock()) self->say();
        });
    }

    void say() {
        if (!bus_) return;
        GVariantBuilder properties;
        g_variant_builder_init(&properties, G_VARIANT_TYPE_VARDICT);
        g_variant_builder_add(&properties, "{sv}", "count", g_variant_new_int64(count_ > 0 ? count_ : 0));
        g_variant_builder_add(&properties, "{sv}", "count-visible", g_variant_new_boolean(count_ > 0));
        if (tellsMenu_ || !menu_.empty()) {
            tellsMenu_ = true;
            g_variant_builder_add(&properties, "{sv}", "quicklist", g_variant_new_string(menu_.c_str()));
        }
        g_dbus_connection_emit_signal(bus_.get(), nullptr, pathOf(uri_).c_str(), "com.canonical.Unity.LauncherEntry",
                                      "Update", g_variant_new("(sa{sv})", uri_.c_str(), &properties), nullptr);
    }

    std::string uri_;
    std::int64_t count_ = 0;
    std::string menu_;
    bool tellsMenu_ = false;
    dbus::Bus bus_;
    MainLoopTimer again_;
};

LauncherBadge::LauncherBadge(const std::string& desktopEntry) : impl_(std::make_shared<Impl>(desktopEntry)) {
    Impl::start(impl_).detach();
}

LauncherBadge::~LauncherBadge() {
    impl_->close();
}

void LauncherBadge::setCount(std::int64_t count) {
    impl_->setCount(count);
}

void LauncherBadge::setMenu(const std::string& objectPath) {
    impl_->setMenu(objectPath);
}

}  // namespace parvela
