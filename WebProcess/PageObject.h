#pragma once

#include <webkit/webkit-web-process-extension.h>

namespace parvela {

/// Gives the page in `frame` the object `window.webkit.messageHandlers.parvela`, whose postMessage() takes any value
/// that JSON can express. Call it whenever the window object was cleared, for main frames only.
///
/// A posted value goes to the view as a user message of the bridge's name with parameters (ss): the address of the
/// document whose script called, and the value as JSON. Values without a JSON form and those beyond 1 MiB are dropped;
/// a value that throws while it is read makes postMessage() throw the same.
void installPageObject(WebKitWebPage* page, WebKitFrame* frame, WebKitScriptWorld* world);

}  // namespace parvela
