#include "Menu/MainMenu.h"

#include <array>
#include <string_view>

#include <fmt/format.h>

namespace parvela {

namespace {

using menuTable::Item;
using menuTable::Kind;
using menuTable::Target;

Ref<GMenu> newMenu() {
    return Ref<GMenu>::adopt(g_menu_new());
}

std::string_view groupOf(Target target) {
    switch (target) {
        case Target::window:
        case Target::text:
            return "win.";
        case Target::application:
        case Target::updater:
            return "app.";
    }
    return "app.";
}

/// What this desktop's users look for besides the table.
constexpr Item findItem{.title = "Find in Page…",
                        .action = "findInPage",
                        .key = "f",
                        .modifiers = menuTable::Modifiers::control | menuTable::Modifiers::shift};
constexpr Item printItem{
    .title = "Print…", .action = "printPage", .key = "p", .modifiers = menuTable::Modifiers::control};

constexpr std::array tabItems = std::to_array<Item>({
    {.title = "Show Next Tab", .action = "selectNextTab", .key = "Tab", .modifiers = menuTable::Modifiers::control},
    {.title = "Show Previous Tab",
     .action = "selectPreviousTab",
     .key = "Tab",
     .modifiers = menuTable::Modifiers::control | menuTable::Modifiers::shift},
    {.title = "Move Tab to New Window", .action = "moveTabToNewWindow"},
});

/// Fields and pages act on these keys by themselves; taking them away would break what they do with them.
bool keysBelongToText(const Item& item) {
    return item.target == Target::text && item.action != "pasteAsPlainText";
}

void setKeys(GtkApplication* application, const std::string& action, const std::vector<std::string>& keys) {
    std::vector<const char*> texts;
    for (const std::string& key : keys) texts.push_back(key.c_str());
    texts.push_back(nullptr);
    gtk_application_set_accels_for_action(application, action.c_str(), texts.data());
}

/// The same command on the keys that a keyboard has beside those of the table.
std::vector<std::string> keysOf(const Item& item) {
    std::vector<std::string> keys{item.accelerator()};
    const auto also = [&](std::string_view action, std::initializer_list<const char*> others) {
        if (item.action == action) keys.insert(keys.end(), others.begin(), others.end());
    };
    also("zoomIn", {"<Control>equal", "<Control>KP_Add"});
    also("zoomOut", {"<Control>KP_Subtract"});
    also("reloadPage", {"F5"});
    also("goBack", {"<Alt>Left"});
    also("goForward", {"<Alt>Right"});
    return keys;
}

}  // namespace

MainMenu::MainMenu(GtkApplication* application) : compact_(newMenu()), bar_(newMenu()), boards_(newMenu()) {
    const Ref<GMenu> submenus = newMenu();
    Ref<GMenu> own;
    for (const menuTable::Menu& menu : menuTable::menus()) {
        const Ref<GMenu> content = sectionsOf(menu);
        g_menu_append_submenu(bar_.get(), std::string(menu.title).c_str(), G_MENU_MODEL(content.get()));
        if (!own) {
            own = content;  // the application's own menu stands last in the compact form, as on this desktop
        } else {
            g_menu_append_submenu(submenus.get(), std::string(menu.title).c_str(), G_MENU_MODEL(content.get()));
        }
        for (const Item& item : menu.items) {
            if (!item.key.empty() && !keysBelongToText(item)) setKeys(application, detailedAction(item), keysOf(item));
        }
    }
    for (const Item& item : {findItem, printItem}) setKeys(application, detailedAction(item), keysOf(item));
    for (const Item& item : tabItems) {
        if (!item.key.empty()) setKeys(application, detailedAction(item), keysOf(item));
    }
    setKeys(application, "win.showMenu", {"F10"});
    g_menu_append_section(compact_.get(), nullptr, G_MENU_MODEL(submenus.get()));
    // Lines are drawn between the outermost sections only.
    for (int index = 0; index < g_menu_model_get_n_items(G_MENU_MODEL(own.get())); ++index) {
        const auto section =
            Ref<GMenuModel>::adopt(g_menu_model_get_item_link(G_MENU_MODEL(own.get()), index, G_MENU_LINK_SECTION));
        g_menu_append_section(compact_.get(), nullptr, section.get());
    }
    gtk_application_set_menubar(application, G_MENU_MODEL(bar_.get()));
}

std::string MainMenu::detailedAction(const Item& item) {
    const std::string name = fmt::format("{}{}", groupOf(item.target), item.action);
    return item.tag ? fmt::format("{}({})", name, *item.tag) : name;
}

Ref<GMenu> MainMenu::sectionsOf(const menuTable::Menu& menu) {
    Ref<GMenu> sections = newMenu();
    Ref<GMenu> section = newMenu();
    const auto close = [&] {
        g_menu_append_section(sections.get(), nullptr, G_MENU_MODEL(section.get()));
        section = newMenu();
    };
    for (const Item& item : menu.items) {
        switch (item.kind) {
            case Kind::separator:
                close();
                break;
            case Kind::boards:
                g_menu_append_submenu(section.get(), std::string(item.title).c_str(), G_MENU_MODEL(boards_.get()));
                break;
            case Kind::action:
                if (item.action == "showQuickAdd") {
                    quickAddSection_ = section;
                    quickAddPosition_ = g_menu_model_get_n_items(G_MENU_MODEL(section.get()));
                }
                append(section.get(), item);
                if (item.action == "focusWebSearch") append(section.get(), findItem);
                if (item.action == "copyPageLink") append(section.get(), printItem);
                if (item.action == "performZoom") {
                    close();
                    for (const Item& tabItem : tabItems) append(section.get(), tabItem);
                }
                break;
        }
    }
    close();
    return sections;
}

void MainMenu::append(GMenu* section, const Item& item) {
    const auto entry =
        Ref<GMenuItem>::adopt(g_menu_item_new(std::string(item.title).c_str(), detailedAction(item).c_str()));
    if (keysBelongToText(item) && !item.key.empty()) {
        g_menu_item_set_attribute(entry.get(), "accel", "s", item.accelerator().c_str());
    }
    if (item.target == Target::updater) {
        // Builds without update checks do not offer them.
        g_menu_item_set_attribute(entry.get(), "hidden-when", "s", "action-disabled");
    }
    g_menu_append_item(section, entry.get());
}

void MainMenu::setBoards(const std::vector<BoardRef>& boards) {
    g_menu_remove_all(boards_.get());
    for (const BoardSection& group : NativeBridge::sections(boards)) {
        const Ref<GMenu> section = newMenu();
        for (const BoardRef& board : group.boards) {
            // A mnemonic sign in a name is part of the name.
            std::string label;
            for (const char letter : board.name) label += letter == '_' ? "__" : std::string(1, letter);
            const auto entry = Ref<GMenuItem>::adopt(g_menu_item_new(label.c_str(), nullptr));
            g_menu_item_set_action_and_target(entry.get(), "win.openBoard", "s", board.id.c_str());
            g_menu_append_item(section.get(), entry.get());
        }
        g_menu_append_section(boards_.get(), group.title ? group.title->c_str() : nullptr, G_MENU_MODEL(section.get()));
    }
}

void MainMenu::setQuickAddKeys(const std::string& accelerator) {
    if (!quickAddSection_) return;
    const auto entry = Ref<GMenuItem>::adopt(g_menu_item_new("Quick Add…", "app.showQuickAdd"));
    if (!accelerator.empty()) g_menu_item_set_attribute(entry.get(), "accel", "s", accelerator.c_str());
    g_menu_remove(quickAddSection_.get(), quickAddPosition_);
    g_menu_insert_item(quickAddSection_.get(), quickAddPosition_, entry.get());
}

}  // namespace parvela
