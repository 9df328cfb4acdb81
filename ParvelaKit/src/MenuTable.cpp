#include <ParvelaKit/MenuTable.h>

#include <array>

namespace parvela::menuTable {

namespace {

constexpr Item separator{.kind = Kind::separator};
constexpr Modifiers ctrl = Modifiers::control;
constexpr Modifiers ctrlShift = Modifiers::control | Modifiers::shift;
constexpr Modifiers ctrlAlt = Modifiers::control | Modifiers::alt;
constexpr Modifiers ctrlAltShift = Modifiers::control | Modifiers::alt | Modifiers::shift;
constexpr Modifiers plain = Modifiers::none;

constexpr Item window(std::string_view title, std::string_view action, std::string_view key, Modifiers modifiers,
                      Needs needs, std::optional<int> tag = std::nullopt) {
    return {Kind::action, title, action, key, modifiers, Target::window, needs, tag};
}
constexpr Item application(std::string_view title, std::string_view action, std::string_view key = {},
                           Modifiers modifiers = Modifiers::none) {
    return {Kind::action, title, action, key, modifiers, Target::application, Needs::nothing, std::nullopt};
}
constexpr Item text(std::string_view title, std::string_view action, std::string_view key, Modifiers modifiers) {
    return {Kind::action, title, action, key, modifiers, Target::text, Needs::nothing, std::nullopt};
}

// Items that have no meaning on this desktop (services, hiding other applications) are not here. Where a platform's own
// keys differ from the web app's other shells, this desktop's are used: F9 for the sidebar, F11 for the full screen.

constexpr std::array appItems = std::to_array<Item>({
    application("About Parvela", "about"),
    {Kind::action, "Check for Updates…", "checkForUpdates", {}, plain, Target::updater, Needs::updater, std::nullopt},
    separator,
    application("Settings…", "showSettings", "comma", ctrl),
    separator,
    application("Hide Parvela", "hide", "h", ctrl),
    separator,
    application("Quit Parvela", "quit", "q", ctrl),
});

constexpr std::array fileItems = std::to_array<Item>({
    window("New Task", "newTask", "n", ctrl, Needs::nothing),
    application("New Window", "newWindow", "n", ctrlShift),
    window("New Tab", "newWindowForTab", "t", ctrl, Needs::nothing),
    application("Quick Add…", "showQuickAdd"),
    separator,
    window("Open in Browser", "openInBrowser", {}, plain, Needs::page),
    window("Copy Link to Page", "copyPageLink", "c", ctrlShift, Needs::page),
    separator,
    window("Close Window", "performClose", "w", ctrl, Needs::window),
});

constexpr std::array editItems = std::to_array<Item>({
    text("Undo", "undo", "z", ctrl),
    text("Redo", "redo", "z", ctrlShift),
    separator,
    text("Cut", "cut", "x", ctrl),
    text("Copy", "copy", "c", ctrl),
    text("Paste", "paste", "v", ctrl),
    text("Paste and Match Style", "pasteAsPlainText", "v", ctrlAltShift),
    text("Delete", "delete", {}, plain),
    text("Select All", "selectAll", "a", ctrl),
    separator,
    window("Search Parvela…", "focusWebSearch", "f", ctrl, Needs::window),
});

constexpr std::array viewItems = std::to_array<Item>({
    window("Board", "setBoardView", "1", ctrl, Needs::board, 0),
    window("List", "setBoardView", "2", ctrl, Needs::board, 1),
    window("Table", "setBoardView", "3", ctrl, Needs::board, 2),
    window("Calendar", "setBoardView", "4", ctrl, Needs::board, 3),
    window("Timeline", "setBoardView", "5", ctrl, Needs::board, 4),
    separator,
    window("Toggle Sidebar", "toggleParvelaSidebar", "F9", plain, Needs::shell),
    separator,
    window("Reload Page", "reloadPage", "r", ctrl, Needs::window),
    window("Reload Ignoring Cache", "reloadFromOrigin", "r", ctrlAlt, Needs::window),
    separator,
    window("Actual Size", "actualSize", "0", ctrlAlt, Needs::window),
    window("Zoom In", "zoomIn", "plus", ctrl, Needs::window),
    window("Zoom Out", "zoomOut", "minus", ctrl, Needs::window),
    separator,
    window("Enter Full Screen", "toggleFullScreen", "F11", plain, Needs::window),
});

constexpr std::array goItems = std::to_array<Item>({
    window("Back", "goBack", "bracketleft", ctrl, Needs::backHistory),
    window("Forward", "goForward", "bracketright", ctrl, Needs::forwardHistory),
    separator,
    window("Home", "goHome", "h", ctrlShift, Needs::window),
    window("My Tasks", "goMyTasks", "m", ctrlShift, Needs::window),
    window("Notifications", "goInbox", "i", ctrlShift, Needs::window),
    window("Boards", "goBoards", "b", ctrlShift, Needs::window),
    window("Search", "goSearch", {}, plain, Needs::window),
    separator,
    {Kind::boards, "Open Board", "openBoard", {}, plain, Target::window, Needs::window, std::nullopt},
});

constexpr std::array windowItems = std::to_array<Item>({
    window("Minimize", "performMiniaturize", "m", ctrl, Needs::window),
    window("Zoom", "performZoom", {}, plain, Needs::window),
    separator,
    application("Parvela Window", "showMainWindow", "0", ctrl),
    separator,
    application("Bring All to Front", "arrangeInFront"),
});

constexpr std::array helpItems = std::to_array<Item>({
    application("Get an API Token…", "openHelp"),
    window("Keyboard Shortcuts", "openShortcutsSheet", {}, plain, Needs::window),
});

constexpr std::array allMenus = std::to_array<Menu>({
    {"Parvela", appItems},
    {"File", fileItems},
    {"Edit", editItems},
    {"View", viewItems},
    {"Go", goItems},
    {"Window", windowItems},
    {"Help", helpItems},
});

}  // namespace

std::string Item::accelerator() const {
    if (key.empty()) return {};
    std::string text;
    if (modifiers & Modifiers::control) text += "<Control>";
    if (modifiers & Modifiers::alt) text += "<Alt>";
    if (modifiers & Modifiers::shift) text += "<Shift>";
    return text.append(key);
}

std::span<const Menu> menus() {
    return allMenus;
}

bool isEnabled(Needs needs, const State& state) {
    switch (needs) {
        case Needs::nothing:
            return true;
        case Needs::updater:
            return state.canUpdate;
        case Needs::window:
            return state.hasWindow;
        case Needs::page:
            return state.hasWindow && state.hasPage;
        case Needs::backHistory:
            return state.hasWindow && state.canGoBack;
        case Needs::forwardHistory:
            return state.hasWindow && state.canGoForward;
        case Needs::board:
            return state.hasWindow && state.showsBoard;
        case Needs::shell:
            return state.hasWindow && state.supportsShell;
    }
    return false;
}

}  // namespace parvela::menuTable
