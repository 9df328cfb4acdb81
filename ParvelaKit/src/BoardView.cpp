#include <ParvelaKit/BoardView.h>

#include <algorithm>
#include <array>

#include <fmt/format.h>

namespace parvela {

namespace {

constexpr std::array<std::string_view, BoardView::count> names = {"board", "list", "table", "calendar", "timeline"};

}  // namespace

std::optional<std::string> BoardView::boardID(const Url& page, const ServerConfig& server) {
    if (!server.isAppOrigin(page)) return std::nullopt;
    // Escapes are undone only after the path was taken apart: an id may hold a "/".
    std::string_view path = page.path();
    std::string_view base = server.appURL.path();
    while (base.ends_with('/')) base.remove_suffix(1);
    if (!path.starts_with(base)) return std::nullopt;
    path.remove_prefix(base.size());
    if (!path.starts_with("/b/")) return std::nullopt;
    path.remove_prefix(3);
    if (path.ends_with('/')) path.remove_suffix(1);
    if (path.empty() || path.contains('/')) return std::nullopt;
    return percentDecode(path);
}

std::optional<std::size_t> BoardView::viewIndex(const Url& page, const ServerConfig& server) {
    if (!boardID(page, server)) return std::nullopt;
    const auto items = decodeQuery(page.query().value_or(""));
    if (!items) return 0;
    const auto view = std::ranges::find(*items, "view", &QueryItem::name);
    if (view == items->end() || !view->value) return 0;
    const auto name = std::ranges::find(names, *view->value);
    return name == names.end() ? 0 : static_cast<std::size_t>(name - names.begin());
}

Url BoardView::page(std::string_view boardID, std::size_t viewIndex, const ServerConfig& server) {
    const std::string path = fmt::format("/b/{}", percentEncode(boardID, UrlCharacters::pathSegment));
    if (viewIndex == 0 || viewIndex >= count) return server.appPageAt(path);
    return server.appPageAt(fmt::format("{}?view={}", path, names[viewIndex]));
}

}  // namespace parvela
