#include <ParvelaKit/DeepLink.h>
#include <ParvelaKit/Text.h>

#include <map>
#include <utility>
#include <vector>

#include <fmt/format.h>

namespace parvela {

namespace {

using Values = std::map<std::string, std::string, std::less<>>;

struct Parts {
    std::string host;
    std::vector<QueryItem> query;
};

struct PartsOf {
    Parts operator()(const DeepLink::AddTask& action) const {
        Parts parts{"add", {{"title", action.content.title}}};
        if (action.content.description) parts.query.push_back({"description", action.content.description});
        return parts;
    }
    Parts operator()(const DeepLink::OpenTask& action) const { return {"task", {{"key", action.key}}}; }
    Parts operator()(const DeepLink::OpenPath& action) const { return {"open", {{"path", action.path}}}; }
    Parts operator()(DeepLink::QuickAdd) const { return {"quick-add", {}}; }
};

const std::string* valueOf(const Values& values, std::string_view name) {
    const auto found = values.find(name);
    return found == values.end() ? nullptr : &found->second;
}

std::string_view withoutSlashes(std::string_view path) {
    while (path.starts_with('/')) path.remove_prefix(1);
    while (path.ends_with('/')) path.remove_suffix(1);
    return path;
}

std::optional<DeepLink> parseAdd(const Values& values) {
    const auto* given = valueOf(values, "title");
    const std::string title(given ? trimmed(*given) : "");
    if (title.empty()) return std::nullopt;
    const auto* description = valueOf(values, "description");
    return DeepLink{
        DeepLink::AddTask{{title, description && !description->empty() ? std::optional(*description) : std::nullopt}}};
}

std::optional<DeepLink> parseTask(const Values& values, const Url& url) {
    std::string key;
    if (const auto* given = valueOf(values, "key")) {
        key = *given;
    } else if (const auto path = url.decodedPath()) {
        key = withoutSlashes(*path);
    }
    return key.empty() ? std::nullopt : std::optional(DeepLink{DeepLink::OpenTask{std::move(key)}});
}

std::optional<DeepLink> parseOpen(const Values& values) {
    const auto* path = valueOf(values, "path");
    // Two slashes would name another host.
    if (!path || !path->starts_with('/') || path->starts_with("//")) return std::nullopt;
    return DeepLink{DeepLink::OpenPath{*path}};
}

}  // namespace

Url DeepLink::url() const {
    const auto [host, query] = std::visit(PartsOf{}, action);
    const std::string encoded = encodeQuery(query);
    return Url::parse(fmt::format("parvela://{}{}{}", host, encoded.empty() ? "" : "?", encoded)).value();
}

std::optional<DeepLink> DeepLink::parse(const Url& url) {
    if (url.lowercaseScheme() != "parvela" || !url.host()) return std::nullopt;
    auto items = decodeQuery(url.query().value_or(""));
    if (!items) return std::nullopt;
    Values values;
    for (QueryItem& item : *items) {
        if (item.value) values.try_emplace(std::move(item.name), std::move(*item.value));
    }

    const std::string host = url.lowercaseHost();
    if (host == "add") return parseAdd(values);
    if (host == "task") return parseTask(values, url);
    if (host == "open") return parseOpen(values);
    if (host == "quick-add") return DeepLink{QuickAdd{}};
    return std::nullopt;
}

}  // namespace parvela
