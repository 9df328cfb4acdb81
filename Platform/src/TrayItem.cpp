#include <ParvelaKit/Text.h>
#include <Platform/DBus.h>
#include <Platform/TrayItem.h>
#include <Platform/XdgPaths.h>

#include <algorithm>
#include <string_view>
#include <unistd.h>
#include <utility>

#include <fmt/format.h>

namespace parvela {

namespace {

constexpr const char* itemPath = "/StatusNotifierItem";
constexpr const char* menuPath = "/StatusNotifierItem/Menu";

const dbus::Address watcher{"org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher", "org.kde.StatusNotifierWatcher"};

constexpr const char* introspection = R"xml(<node><interface name="org.kde.StatusNotifierItem">
  <method name="Activate"><arg name="x" type="i" direction="in"/><arg name="y" type="i" direction="in"/></method>
  <method name="SecondaryActivate"><arg name="x" type="i" direction="in"/><arg name="y" type="i" direction="in"/></method>
  <method name="ContextMenu"><arg name="x" type="i" direction="in"/><arg name="y" type="i" direction="in"/></method>
  <method name="Scroll"><arg name="delta" type="i" direction="in"/><arg name="orientation" type="s" direction="in"/></method>
  <method name="ProvideXdgActivationToken"><arg name="token" type="s" direction="in"/></method>
  <property name="Category" type="s" access="read"/>
  <property name="Id" type="s" access="read"/>
  <property name="Title" type="s" access="read"/>
  <property name="Status" type="s" access="read"/>
  <property name="WindowId" type="i" access="read"/>
  <property name="IconThemePath" type="s" access="read"/>
  <property name="IconName" type="s" access="read"/>
  <property name="IconPixmap" type="a(iiay)" access="read"/>
  <property name="OverlayIconName" type="s" access="read"/>
  <property name="OverlayIconPixmap" type="a(iiay)" access="read"/>
  <property name="AttentionIconName" type="s" access="read"/>
  <property name="AttentionIconPixmap" type="a(iiay)" access="read"/>
  <property name="AttentionMovieName" type="s" access="read"/>
  <property name="ToolTip" type="(sa(iiay)ss)" access="read"/>
  <property name="ItemIsMenu" type="b" access="read"/>
  <property name="Menu" type="o" access="read"/>
  <property name="XAyatanaLabel" type="s" access="read"/>
  <property name="XAyatanaLabelGuide" type="s" access="read"/>
  <property name="XAyatanaOrderingIndex" type="u" access="read"/>
  <signal name="NewTitle"/>
  <signal name="NewIcon"/>
  <signal name="NewToolTip"/>
  <signal name="NewStatus"><arg name="status" type="s"/></signal>
  <signal name="XAyatanaNewLabel"><arg name="label" type="s"/><arg name="guide" type="s"/></signal>
</interface></node>)xml";

GVariant* pixmaps(const std::vector<TrayIcon>& icons) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a(iiay)"));
    for (const TrayIcon& icon : icons) {
        GVariant* const bytes =
            g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, icon.pixels.data(), icon.pixels.size(), 1);
        g_variant_builder_add(&builder, "(ii@ay)", icon.size, icon.size, bytes);
    }
    return g_variant_builder_end(&builder);
}

}  // namespace

class TrayItem::Impl : public std::enable_shared_from_this<Impl> {
public:
    Impl(TrayItem& owner, Identity identity) : owner_(&owner), identity_(std::move(identity)) {}

    ~Impl() {
        if (name_ != 0) g_bus_unown_name(name_);
    }

    void close() {
        owner_ = nullptr;
        watch_ = {};
        object_ = {};
    }

    static Task<void> start(std::shared_ptr<Impl> self) {
        auto connecting = dbus::connect(G_BUS_TYPE_SESSION);
        auto bus = co_await connecting;
        if (!bus || !self->owner_) co_return;
        self->bus_ = std::move(bus);
        self->publish();
    }

    void setIcons(std::vector<TrayIcon> icons) {
        identity_.icons = std::move(icons);
        emit("NewIcon", nullptr);
    }

    void setLabel(const std::string& label) {
        if (std::exchange(label_, label) == label) return;
        emit("XAyatanaNewLabel", g_variant_new("(ss)", label_.c_str(), labelGuide().c_str()));
        emit("NewTitle", nullptr);
    }

    void setToolTip(const std::string& text) {
        if (std::exchange(toolTip_, text) == text) return;
        emit("NewToolTip", nullptr);
    }

    void setMenu(std::vector<TrayMenuEntry> entries) {
        menu_ = std::move(entries);
        if (exportedMenu_) exportedMenu_->set(menu_);
    }

    Observable<bool> isShown{false};

private:
    std::weak_ptr<Impl> weak() { return weak_from_this(); }

    void publish() {
        object_ = dbus::ExportedObject(
            bus_, itemPath, introspection,
            {.call =
                 [weak = weak()](const std::string& method, GVariant* values, GDBusMethodInvocation* invocation) {
                     g_dbus_method_invocation_return_value(invocation, nullptr);
                     if (const auto self = weak.lock()) self->called(method, values);
                 },
             .get = [this](const std::string& property) { return property_(property); }});
        if (!object_) return;
        exportedMenu_ = std::make_unique<DesktopMenu>(menuPath);
        exportedMenu_->set(menu_);
        std::string name = g_dbus_connection_get_unique_name(bus_.get());
        if (!isSandboxed()) {  // there nobody may own a name that nobody could foresee
            name = fmt::format("org.kde.StatusNotifierItem-{}-1", getpid());
            name_ = g_bus_own_name_on_connection(bus_.get(), name.c_str(), G_BUS_NAME_OWNER_FLAGS_NONE, nullptr,
                                                 nullptr, nullptr, nullptr);
        }
        const auto refresh = [weak = weak()](GVariant*) {
            if (const auto self = weak.lock()) askForHost(self).detach();
        };
        hostCame_ = dbus::SignalSubscription(bus_, watcher, "StatusNotifierHostRegistered", refresh);
        hostWent_ = dbus::SignalSubscription(bus_, watcher, "StatusNotifierHostUnregistered", refresh);
        watch_ = dbus::NameWatch(bus_, watcher.name, [weak = weak(), name](const std::string& owner) {
            const auto self = weak.lock();
            if (!self) return;
            if (owner.empty()) {
                self->isShown.set(false);
            } else {
                registerAt(self, name).detach();
            }
        });
    }

    static Task<void> registerAt(std::shared_ptr<Impl> self, std::string name) {
        auto registering = dbus::call(self->bus_, watcher, "RegisterStatusNotifierItem",
                                      g_variant_new("(s)", name.c_str()), dbus::Start::never);
        const VariantPtr answer = co_await registering;
        self->isRegistered_ = static_cast<bool>(answer);
        auto asking = askForHost(self);
        co_await asking;
    }

    /// A watcher without a host keeps items that nobody shows.
    static Task<void> askForHost(std::shared_ptr<Impl> self) {
        dbus::Address properties = watcher;
        properties.interface = "org.freedesktop.DBus.Properties";
        auto asking = dbus::call(self->bus_, properties, "Get",
                                 g_variant_new("(ss)", watcher.interface.c_str(), "IsStatusNotifierHostRegistered"),
                                 dbus::Start::never);
        const VariantPtr answer = co_await asking;
        bool hosted = false;
        if (answer && g_variant_is_of_type(answer.get(), G_VARIANT_TYPE("(v)"))) {
            VariantPtr value;
            g_variant_get(answer.get(), "(v)", value.out());
            hosted = g_variant_is_of_type(value.get(), G_VARIANT_TYPE_BOOLEAN) && g_variant_get_boolean(value.get());
        }
        self->isShown.set(hosted && self->isRegistered_);
    }

    void called(const std::string& method, GVariant* values) {
        if (method == "ProvideXdgActivationToken") {
            const char* token = nullptr;
            g_variant_get(values, "(&s)", &token);
            token_ = token;
        } else if (method == "Activate") {
            Activation activation{.token = std::exchange(token_, std::nullopt)};
            g_variant_get(values, "(ii)", &activation.x, &activation.y);
            if (owner_ && owner_->onActivate) owner_->onActivate(activation);
        }
    }

    GVariant* property_(std::string_view name) const {
        if (name == "Category") return g_variant_new_string("ApplicationStatus");
        if (name == "Id") return g_variant_new_string(identity_.id.c_str());
        if (name == "Title") {
            const std::string_view label = trimmed(label_);
            return g_variant_new_string(
                (label.empty() ? identity_.title : fmt::format("{} — {}", identity_.title, label)).c_str());
        }
        if (name == "Status") return g_variant_new_string("Active");
        if (name == "WindowId") return g_variant_new_int32(0);
        if (name == "IconThemePath") return g_variant_new_string(identity_.iconFolder.c_str());
        if (name == "IconName") return g_variant_new_string(identity_.iconName.c_str());
        if (name == "IconPixmap") return pixmaps(identity_.icons);
        if (name == "OverlayIconPixmap" || name == "AttentionIconPixmap") return pixmaps({});
        if (name == "ToolTip") {
            const CharPtr markup(g_markup_escape_text(toolTip_.c_str(), -1));
            return g_variant_new("(s@a(iiay)ss)", "", pixmaps({}), identity_.title.c_str(), markup.get());
        }
        // Or a left click would open the menu.
        if (name == "ItemIsMenu") return g_variant_new_boolean(FALSE);
        if (name == "Menu") return g_variant_new_object_path(menuPath);
        if (name == "XAyatanaLabel") return g_variant_new_string(label_.c_str());
        if (name == "XAyatanaLabelGuide") return g_variant_new_string(labelGuide().c_str());
        if (name == "XAyatanaOrderingIndex") return g_variant_new_uint32(0);
        return g_variant_new_string("");  // the other names of icons and films
    }

    /// As wide as the label gets, so that digits that change do not make the panel jump.
    std::string labelGuide() const {
        std::string guide = label_;
        std::ranges::replace_if(guide, [](char c) { return c >= '0' && c <= '9'; }, '0');
        return guide;
    }

    void emit(const char* signal, GVariant* values) {
        const VariantPtr held(values ? g_variant_ref_sink(values) : nullptr);
        if (!object_) return;
        g_dbus_connection_emit_signal(bus_.get(), nullptr, itemPath, "org.kde.StatusNotifierItem", signal, held.get(),
                                      nullptr);
    }

    TrayItem* owner_;
    Identity identity_;
    std::string label_, toolTip_;
    std::optional<std::string> token_;
    std::vector<TrayMenuEntry> menu_;
    bool isRegistered_ = false;
    dbus::Bus bus_;
    dbus::ExportedObject object_;
    guint name_ = 0;
    dbus::SignalSubscription hostCame_, hostWent_;
    dbus::NameWatch watch_;
    std::unique_ptr<DesktopMenu> exportedMenu_;
};

TrayItem::TrayItem(Identity identity) : impl_(std::make_shared<Impl>(*this, std::move(identity))) {
    Impl::start(impl_).detach();
}

TrayItem::~TrayItem() {
    impl_->close();
}

const Observable<bool>& TrayItem::isShown() const {
    return impl_->isShown;
}

void TrayItem::setIcons(std::vector<TrayIcon> icons) {
    impl_->setIcons(std::move(icons));
}

void TrayItem::setLabel(const std::string& label) {
    impl_->setLabel(label);
}

void TrayItem::setToolTip(const std::string& text) {
    impl_->setToolTip(text);
}

void TrayItem::setMenu(std::vector<TrayMenuEntry> menu) {
    impl_->setMenu(std::move(menu));
}

}  // namespace parvela
