#include "Web/PageContextMenu.h"

#include <utility>

namespace parvela {

namespace {

bool isPointless(WebKitContextMenuAction action) {
    switch (action) {
        case WEBKIT_CONTEXT_MENU_ACTION_OPEN_LINK:
        case WEBKIT_CONTEXT_MENU_ACTION_OPEN_IMAGE_IN_NEW_WINDOW:
        case WEBKIT_CONTEXT_MENU_ACTION_OPEN_FRAME_IN_NEW_WINDOW:
        case WEBKIT_CONTEXT_MENU_ACTION_STOP:
        case WEBKIT_CONTEXT_MENU_ACTION_UNICODE:
            return true;
        default:
            return false;
    }
}

}  // namespace

PageContextMenu::PageContextMenu(WebKitWebView* view, std::function<void(const Url&)> openInBrowser)
    : openInBrowser_(std::move(openInBrowser)),
      shown_(connect<gboolean(WebKitWebView*, WebKitContextMenu*, WebKitHitTestResult*)>(
          view, "context-menu", [this](WebKitWebView*, WebKitContextMenu* menu, WebKitHitTestResult* target) {
              shape(menu, target);
              return gboolean{FALSE};
          })) {
}

void PageContextMenu::shape(WebKitContextMenu* menu, WebKitHitTestResult* target) {
    int position = 0;
    for (GList* one = webkit_context_menu_get_items(menu); one;) {
        auto* const item = WEBKIT_CONTEXT_MENU_ITEM(one->data);
        one = one->next;
        const WebKitContextMenuAction action = webkit_context_menu_item_get_stock_action(item);
        if (isPointless(action)) {
            webkit_context_menu_remove(menu, item);
            continue;
        }
        if (action == WEBKIT_CONTEXT_MENU_ACTION_OPEN_LINK_IN_NEW_WINDOW) {
            // New windows of pages are tabs here.
            webkit_context_menu_remove(menu, item);
            webkit_context_menu_insert(
                menu, webkit_context_menu_item_new_from_stock_action_with_label(action, "Open Link in New Tab"),
                position);
        }
        ++position;
    }
    const auto link = webkit_hit_test_result_context_is_link(target)
                          ? Url::parseFromEngine(webkit_hit_test_result_get_link_uri(target))
                          : std::nullopt;
    if (!link) return;
    const auto open = Ref<GSimpleAction>::adopt(g_simple_action_new("openLinkInBrowser", nullptr));
    chosen_ = connect<void(GSimpleAction*, GVariant*)>(
        open.get(), "activate", [this, url = *link](GSimpleAction*, GVariant*) { openInBrowser_(url); });
    webkit_context_menu_insert(
        menu, webkit_context_menu_item_new_from_gaction(G_ACTION(open.get()), "Open Link in Browser", nullptr), 1);
}

}  // namespace parvela
