#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Text.h>
#include <Platform/DesktopMenu.h>
#include <Platform/MainLoop.h>

#include <libdbusmenu-glib/client.h>
#include <libdbusmenu-glib/menuitem.h>
#include <libdbusmenu-glib/server.h>

namespace parvela {

namespace {

/// Well-formed, and a "_" would become a mnemonic.
std::string labelText(const std::string& label) {
    std::string result;
    for (const char c : toUtf8(toUtf16(label))) result.append(c == '_' ? 2 : 1, c);
    return result;
}

}  // namespace

class DesktopMenu::Impl {
public:
    Impl(DesktopMenu& owner, const std::string& path)
        : owner_(owner), server_(Ref<DbusmenuServer>::adopt(dbusmenu_server_new(path.c_str()))) {}

    void set(const std::vector<DesktopMenuEntry>& entries) {
        const auto root = Ref<DbusmenuMenuitem>::adopt(dbusmenu_menuitem_new());
        clicks_.clear();
        append(root.get(), entries);
        aboutToShow_ = connect<gboolean(DbusmenuMenuitem*)>(root.get(), DBUSMENU_MENUITEM_SIGNAL_ABOUT_TO_SHOW,
                                                            [this](DbusmenuMenuitem*) {
                                                                tellLater();
                                                                return gboolean{FALSE};
                                                            });
        dbusmenu_server_set_root(server_.get(), root.get());
    }

private:
    /// Setting a menu here would take away the item that the host is asking about.
    void tellLater() {
        telling_ = MainLoopTimer(std::chrono::milliseconds(0), [this] {
            if (owner_.onAboutToShow) owner_.onAboutToShow();
        });
    }

    void append(DbusmenuMenuitem* parent, const std::vector<DesktopMenuEntry>& entries) {
        for (const DesktopMenuEntry& entry : entries) {
            const auto item = Ref<DbusmenuMenuitem>::adopt(dbusmenu_menuitem_new());
            if (entry.kind == DesktopMenuEntry::Kind::separator) {
                dbusmenu_menuitem_property_set(item.get(), DBUSMENU_MENUITEM_PROP_TYPE,
                                               DBUSMENU_CLIENT_TYPES_SEPARATOR);
            } else {
                fill(item.get(), entry);
            }
            dbusmenu_menuitem_child_append(parent, item.get());
        }
    }

    void fill(DbusmenuMenuitem* item, const DesktopMenuEntry& entry) {
        dbusmenu_menuitem_property_set(item, DBUSMENU_MENUITEM_PROP_LABEL, labelText(entry.label).c_str());
        if (!entry.description.empty()) {
            dbusmenu_menuitem_property_set(item, DBUSMENU_MENUITEM_PROP_ACCESSIBLE_DESC,
                                           toUtf8(toUtf16(entry.description)).c_str());
        }
        if (!entry.icon.empty()) {
            dbusmenu_menuitem_property_set_byte_array(item, DBUSMENU_MENUITEM_PROP_ICON_DATA,
                                                      reinterpret_cast<const guchar*>(entry.icon.data()),
                                                      entry.icon.size());
        }
        if (!entry.children.empty()) {
            dbusmenu_menuitem_property_set(item, DBUSMENU_MENUITEM_PROP_CHILD_DISPLAY,
                                           DBUSMENU_MENUITEM_CHILD_DISPLAY_SUBMENU);
            append(item, entry.children);
        } else if (!entry.action) {
            dbusmenu_menuitem_property_set_bool(item, DBUSMENU_MENUITEM_PROP_ENABLED, FALSE);
        } else {
            // The action may change the menu, and with it this connection.
            clicks_.push_back(connect<void(DbusmenuMenuitem*, guint)>(
                item, DBUSMENU_MENUITEM_SIGNAL_ITEM_ACTIVATED, [action = entry.action](DbusmenuMenuitem*, guint) {
                    const auto kept = action;
                    kept();
                }));
        }
    }

    DesktopMenu& owner_;
    Ref<DbusmenuServer> server_;
    std::vector<Connection> clicks_;
    Connection aboutToShow_;
    MainLoopTimer telling_;
};

DesktopMenu::DesktopMenu(const std::string& objectPath) : impl_(std::make_unique<Impl>(*this, objectPath)) {
}

DesktopMenu::~DesktopMenu() = default;

void DesktopMenu::set(const std::vector<DesktopMenuEntry>& entries) {
    impl_->set(entries);
}

}  // namespace parvela
