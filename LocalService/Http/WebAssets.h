#pragma once

#include "Http/Message.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace parvela::service {

/// The web app's files: from the program itself, or from a folder while the web app is being developed.
class WebAssets {
public:
    explicit WebAssets(std::optional<std::filesystem::path> folder) : folder_(std::move(folder)) {}

    /// The file at the request's path. A path without a file extension is a page of the web app and gets "index.html".
    Answer serve(const Request& request);

private:
    struct Asset {
        std::string body;
        std::string etag;
    };

    std::optional<Asset> load(const std::string& name);

    std::optional<std::filesystem::path> folder_;
    std::map<std::string, Asset> loaded_;  ///< only of the embedded files, which never change
};

/// Media type by file extension; "application/octet-stream" for unknown ones.
std::string mediaType(std::string_view fileName);

}  // namespace parvela::service
