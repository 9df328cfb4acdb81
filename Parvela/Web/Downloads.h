#pragma once

#include "Model/Notifier.h"

#include <ParvelaKit/GLibPtr.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <webkit/webkit.h>

namespace parvela {

/// Saves what pages offer for download into the user's folder for downloads, shows the progress, and tells when a file
/// has arrived or failed.
class Downloads {
public:
    Downloads(WebKitNetworkSession* session, std::filesystem::path folder);
    Downloads(const Downloads&) = delete;
    Downloads& operator=(const Downloads&) = delete;
    ~Downloads();

    /// Where a download's progress shows: the box of the window it came from, or none.
    std::function<GtkBox*(WebKitWebView* view)> rowsFor;
    /// A download has begun in this view.
    std::function<void(WebKitWebView* view)> onStarted;
    std::function<void(UserNotification)> notify;

private:
    struct Item;

    void started(WebKitDownload* download);
    bool decideDestination(Item& item, const char* suggestedName);
    void finished(Item& item);
    void failed(Item& item, const GError* error);
    void tellFailure(const Item& item, const std::string& reason) const;
    void remove(const Item& item);
    bool isTaken(const std::string& name) const;

    std::filesystem::path folder_;
    Connection started_;
    std::vector<std::unique_ptr<Item>> items_;
};

}  // namespace parvela
