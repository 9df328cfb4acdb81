#include "Web/Downloads.h"

#include "Web/DownloadRow.h"

#include <ParvelaKit/DownloadName.h>
#include <Platform/MainLoop.h>

#include <algorithm>
#include <utility>

#include <gio/gio.h>

namespace parvela {

namespace {

/// The file's size as the server has announced it; none where it says nothing, or speaks of a compressed form of it.
std::optional<guint64> announcedLength(WebKitDownload* download) {
    WebKitURIResponse* const response = webkit_download_get_response(download);
    const guint64 length = response ? webkit_uri_response_get_content_length(response) : 0;
    SoupMessageHeaders* const headers = response ? webkit_uri_response_get_http_headers(response) : nullptr;
    if (length == 0 || !headers || soup_message_headers_get_one(headers, "Content-Encoding")) return std::nullopt;
    return length;
}

/// The engine takes the end of the connection for the end of the file.
bool isWhole(WebKitDownload* download) {
    const auto length = announcedLength(download);
    return !length || webkit_download_get_received_data_length(download) >= *length;
}

}  // namespace

/// One download, from its start until it has ended.
struct Downloads::Item {
    Ref<WebKitDownload> download;
    std::filesystem::path destination;  ///< empty until it is decided
    std::unique_ptr<DownloadRow> row;
    bool hasFailed = false;
    std::vector<Connection> connections;

    std::string name() const { return destination.filename().string(); }
    std::string fileURI() const {
        const CharPtr uri(g_filename_to_uri(destination.c_str(), nullptr, nullptr));
        return uri ? uri.get() : "";
    }
};

Downloads::Downloads(WebKitNetworkSession* session, std::filesystem::path folder) : folder_(std::move(folder)) {
    started_ = connect<void(WebKitNetworkSession*, WebKitDownload*)>(
        session, "download-started", [this](WebKitNetworkSession*, WebKitDownload* download) { started(download); });
}

Downloads::~Downloads() = default;

void Downloads::started(WebKitDownload* download) {
    Item& item = *items_.emplace_back(std::make_unique<Item>(Item{.download = Ref<WebKitDownload>::ref(download)}));
    item.connections.push_back(connect<gboolean(WebKitDownload*, const char*)>(
        download, "decide-destination", [this, &item](WebKitDownload*, const char* suggested) {
            return static_cast<gboolean>(decideDestination(item, suggested));
        }));
    item.connections.push_back(
        connect<void(WebKitDownload*, guint64)>(download, "received-data", [&item](WebKitDownload* source, guint64) {
            if (!item.row) return;
            item.row->setProgress(
                announcedLength(source) ? std::optional(webkit_download_get_estimated_progress(source)) : std::nullopt);
        }));
    item.connections.push_back(connect<void(WebKitDownload*, GError*)>(
        download, "failed", [this, &item](WebKitDownload*, GError* error) { failed(item, error); }));
    item.connections.push_back(
        connect<void(WebKitDownload*)>(download, "finished", [this, &item](WebKitDownload*) { finished(item); }));
    if (onStarted) onStarted(webkit_download_get_web_view(download));
}

bool Downloads::isTaken(const std::string& name) const {
    const auto path = folder_ / name;
    std::error_code error;
    return std::filesystem::exists(std::filesystem::symlink_status(path, error)) ||
           std::ranges::any_of(items_, [&](const auto& item) { return item->destination == path; });
}

bool Downloads::decideDestination(Item& item, const char* suggestedName) {
    std::error_code error;
    std::filesystem::create_directories(folder_, error);
    const std::string name =
        downloadName(suggestedName ? suggestedName : "", [this](const std::string& one) { return isTaken(one); });
    item.destination = folder_ / name;
    webkit_download_set_destination(item.download.get(), item.destination.c_str());
    WebKitWebView* const view = webkit_download_get_web_view(item.download.get());
    if (GtkBox* const rows = rowsFor ? rowsFor(view) : nullptr) {
        item.row = std::make_unique<DownloadRow>(
            rows, name, [download = item.download] { webkit_download_cancel(download.get()); });
    }
    return true;
}

void Downloads::failed(Item& item, const GError* error) {
    item.hasFailed = true;
    if (g_error_matches(error, WEBKIT_DOWNLOAD_ERROR, WEBKIT_DOWNLOAD_ERROR_CANCELLED_BY_USER)) return;
    tellFailure(item, error->message);
}

void Downloads::tellFailure(const Item& item, const std::string& reason) const {
    if (!notify) return;
    const CharPtr identifier(g_uuid_string_random());
    notify(UserNotification{
        .title = "Download failed",
        .body = item.destination.empty() ? reason : item.name() + ": " + reason,
        .identifier = identifier.get(),
    });
}

/// Comes after failed() as well.
void Downloads::finished(Item& item) {
    if (!item.hasFailed && !isWhole(item.download.get())) {
        item.hasFailed = true;
        std::error_code error;
        std::filesystem::remove(item.destination, error);
        tellFailure(item, "The connection ended before the whole file had come.");
    }
    if (!item.hasFailed && !item.destination.empty()) {
        if (item.row) std::exchange(item.row, nullptr)->finish(item.destination);
        const CharPtr identifier(g_uuid_string_random());
        const auto url = Url::parse(item.fileURI());
        if (notify) {
            notify(UserNotification{
                .title = "Downloaded " + item.name(),
                .body = "Saved to your Downloads folder. Click to show it in Finder.",
                .identifier = identifier.get(),
                .target = url ? std::optional(DeepLinkTarget{DeepLinkTarget::File{*url}}) : std::nullopt,
            });
        }
    }
    remove(item);
}

/// Once the download's own signal has returned.
void Downloads::remove(const Item& item) {
    const auto found = std::ranges::find(items_, &item, &std::unique_ptr<Item>::get);
    if (found == items_.end()) return;
    const std::shared_ptr<Item> gone(std::move(*found));
    items_.erase(found);
    runSoon([gone] {});
}

}  // namespace parvela
