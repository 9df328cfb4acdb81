#include "PageObject.h"

#include <webkit/webkit-web-process-extension.h>

namespace {

void windowObjectCleared(WebKitScriptWorld* world, WebKitWebPage* page, WebKitFrame* frame, gpointer) {
    if (webkit_frame_is_main_frame(frame)) parvela::installPageObject(page, frame, world);
}

}  // namespace

extern "C" G_MODULE_EXPORT void webkit_web_process_extension_initialize(WebKitWebProcessExtension*) {
    g_signal_connect(webkit_script_world_get_default(), "window-object-cleared", G_CALLBACK(windowObjectCleared),
                     nullptr);
}
