#include "Domain/Contains.h"
#include "Http/WebAssets.h"
#include "Routes/Routes.h"

#include <ParvelaKit/Text.h>
#include <ParvelaKit/Url.h>

#include <algorithm>
#include <array>

namespace parvela::service {

namespace {

constexpr std::size_t longestName = 200;

/// Pictures that no browser runs scripts from.
constexpr std::array<std::string_view, 4> inlineTypes = {"image/gif", "image/jpeg", "image/png", "image/webp"};

/// A name without folders and control characters, as it may be offered for saving.
std::string plainFileName(std::string_view name) {
    name = name.substr(name.find_last_of("/\\") + 1);
    std::string plain;
    for (const char c : trimmed(firstCharacters(name, longestName))) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7f) plain.push_back(c);
    }
    while (plain.starts_with('.')) plain.erase(0, 1);
    return plain.empty() ? "File" : plain;
}

/// RFC 6266 with the encoding of RFC 8187.
std::string contentDisposition(std::string_view kind, const std::string& name) {
    return std::string(kind) + "; filename*=UTF-8''" + percentEncode(name, UrlCharacters::alphanumerics);
}

struct VisibleFile {
    FileRow file;
    TaskRow task;
};

Result<VisibleFile, HttpError> fileOfCall(Backend& backend, Call& call) {
    const auto id = call.id<FileId>(0);
    const auto file = id ? backend.stores.files.find(*id) : std::nullopt;
    if (!file) return Failure(HttpError::notFound("There is no such file."));
    const auto task = backend.task(file->task, call.person());
    if (!task) return Failure(HttpError::notFound("There is no such file."));
    return VisibleFile{*file, *task};
}

Answer upload(Backend& backend, Call& call) {
    const auto task = backend.task(call);
    if (!task) return Failure(task.error());
    const std::string name = plainFileName(call.request.queryItem("name").value_or(""));
    const FileId id = backend.stores.files.add(
        {.task = task->id, .creator = call.person().id, .name = name, .mime = mediaType(name)}, call.request.body);
    backend.stores.tasks.addActivity(task->id, call.person().id, "attached " + name);
    backend.actions.touched(*task);
    return Response::json(fileAnswer(*backend.stores.files.find(id)));
}

Answer download(Backend& backend, Call& call) {
    const auto found = fileOfCall(backend, call);
    if (!found) return Failure(found.error());
    const FileRow& file = found->file;
    const bool shown = call.request.queryItem("inline") == "1" && contains(inlineTypes, file.mime);
    Response response{.contentType = file.mime, .body = backend.stores.files.contents(file.id)};
    response.headers = {{"Content-Disposition", contentDisposition(shown ? "inline" : "attachment", file.name)},
                        {"Content-Security-Policy", "sandbox; default-src 'none'"},
                        {"Cache-Control", "private, no-cache"}};
    return response;
}

Answer removeFile(Backend& backend, Call& call) {
    const auto found = fileOfCall(backend, call);
    if (!found) return Failure(found.error());
    backend.stores.files.remove(found->file.id);
    backend.stores.tasks.addActivity(found->task.id, call.person().id, "removed " + found->file.name);
    backend.actions.touched(found->task);
    return Response::ok();
}

}  // namespace

void addFileRoutes(Router& router, Backend& backend) {
    const auto bound = bindTo(backend);
    using enum Access;
    router.add("POST", "/api/tasks/{}/files", writer, bound(upload));
    router.add("GET", "/files/{}/{}", reader, bound(download));
    router.add("DELETE", "/api/files/{}", writer, bound(removeFile));
}

}  // namespace parvela::service
