#include "Http/WebAssets.h"

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Text.h>

#include <array>
#include <fstream>
#include <sstream>

#include <gio/gio.h>

namespace parvela::service {

namespace {

constexpr std::string_view resourcePrefix = "/app/parvela/web/";

constexpr const char* contentSecurityPolicy =
    "default-src 'self'; img-src 'self' data: blob:; object-src 'none'; base-uri 'none'; form-action 'self'; "
    "frame-ancestors 'none'";

struct MediaType {
    std::string_view extension, type;
};
constexpr std::array mediaTypes = {
    MediaType{"css", "text/css; charset=utf-8"},
    MediaType{"gif", "image/gif"},
    MediaType{"html", "text/html; charset=utf-8"},
    MediaType{"ico", "image/x-icon"},
    MediaType{"jpeg", "image/jpeg"},
    MediaType{"jpg", "image/jpeg"},
    MediaType{"js", "text/javascript; charset=utf-8"},
    MediaType{"json", "application/json"},
    MediaType{"md", "text/plain; charset=utf-8"},
    MediaType{"mjs", "text/javascript; charset=utf-8"},
    MediaType{"pdf", "application/pdf"},
    MediaType{"png", "image/png"},
    MediaType{"svg", "image/svg+xml"},
    MediaType{"txt", "text/plain; charset=utf-8"},
    MediaType{"webmanifest", "application/manifest+json"},
    MediaType{"webp", "image/webp"},
    MediaType{"woff2", "font/woff2"},
    MediaType{"zip", "application/zip"},
};

/// No way out of the folder: no dots, no separators inside a piece, no empty piece.
bool isPlainPath(const std::vector<std::string>& segments) {
    for (const std::string& piece : segments) {
        if (piece.empty() || piece.front() == '.' || piece.contains('/') || piece.contains('\\')) return false;
    }
    return true;
}

std::string checksum(std::string_view body) {
    const CharPtr digest(
        g_compute_checksum_for_data(G_CHECKSUM_SHA256, reinterpret_cast<const guchar*>(body.data()), body.size()));
    return '"' + std::string(digest.get(), 32) + '"';
}

}  // namespace

std::string mediaType(std::string_view fileName) {
    const auto dot = fileName.rfind('.');
    if (dot != std::string_view::npos) {
        const std::string extension = asciiLowercased(fileName.substr(dot + 1));
        for (const auto& [known, type] : mediaTypes) {
            if (known == extension) return std::string(type);
        }
    }
    return "application/octet-stream";
}

Answer WebAssets::serve(const Request& request) {
    const bool isPage = request.segments.empty() || !request.segments.back().contains('.');
    if (!isPage && !isPlainPath(request.segments)) return Failure(HttpError::notFound());
    std::string name = "index.html";
    if (!isPage) {
        name.clear();
        for (const std::string& piece : request.segments) name += (name.empty() ? "" : "/") + piece;
    }
    // Calls that do not exist must not look like pages to a program.
    if (isPage && !request.segments.empty() && (request.segments[0] == "api" || request.segments[0] == "files")) {
        return Failure(HttpError::notFound());
    }
    const auto asset = load(name);
    if (!asset) return Failure(HttpError::notFound());

    Response response{.contentType = mediaType(name)};
    response.headers.emplace_back("Referrer-Policy", "same-origin");
    if (name.ends_with(".html")) {
        response.headers.emplace_back("Content-Security-Policy", contentSecurityPolicy);
        response.headers.emplace_back("X-Frame-Options", "DENY");
        response.body = asset->body;
        return response;
    }
    response.headers.emplace_back("Cache-Control", "no-cache");
    response.headers.emplace_back("ETag", asset->etag);
    if (request.header("If-None-Match") == asset->etag) {
        response.status = 304;
        response.contentType.clear();
        return response;
    }
    response.body = asset->body;
    return response;
}

std::optional<WebAssets::Asset> WebAssets::load(const std::string& name) {
    if (folder_) {
        std::error_code error;
        const auto root = std::filesystem::weakly_canonical(*folder_, error);
        const auto file = std::filesystem::weakly_canonical(root / name, error);
        // A symbolic link inside the folder does not lead outside either.
        if (error || std::mismatch(root.begin(), root.end(), file.begin(), file.end()).first != root.end()) return {};
        if (!std::filesystem::is_regular_file(file, error)) return {};
        std::ifstream stream(file, std::ios::binary);
        std::ostringstream content;
        content << stream.rdbuf();
        if (!stream) return {};
        std::string body = std::move(content).str();
        std::string etag = checksum(body);
        return Asset{std::move(body), std::move(etag)};
    }
    if (const auto found = loaded_.find(name); found != loaded_.end()) return found->second;
    const BytesPtr bytes(
        g_resources_lookup_data((std::string(resourcePrefix) + name).c_str(), G_RESOURCE_LOOKUP_FLAGS_NONE, nullptr));
    if (!bytes) return {};
    gsize size = 0;
    const auto* data = static_cast<const char*>(g_bytes_get_data(bytes.get(), &size));
    Asset asset{std::string(data, size), {}};
    asset.etag = checksum(asset.body);
    return loaded_.emplace(name, std::move(asset)).first->second;
}

}  // namespace parvela::service
