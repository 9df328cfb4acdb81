#include "Automation/SearchDoors.h"

#include "Automation/DesktopSearch.h"

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/ShownTitle.h>

#include <algorithm>
#include <string_view>
#include <utility>

namespace parvela {

namespace {

using Actions = std::shared_ptr<AutomationActions>;

/// Desktops ask for few at a time; more are cut off.
constexpr std::size_t mostIds = 100;

std::vector<std::string> texts(GVariant* values, gsize index) {
    const VariantPtr list(g_variant_get_child_value(values, index));
    std::vector<std::string> result;
    for (gsize i = 0; i < std::min<gsize>(g_variant_n_children(list.get()), mostIds); ++i) {
        const char* text = nullptr;
        g_variant_get_child(list.get(), i, "&s", &text);
        result.emplace_back(text);
    }
    return result;
}

std::string text(GVariant* values, gsize index) {
    const char* value = nullptr;
    g_variant_get_child(values, index, "&s", &value);
    return value;
}

/// Desktops show what they are given as it is.
std::string shown(std::string_view text) {
    constexpr std::size_t longest = 300;
    return shortened(text, longest);
}

std::string phraseOf(const std::vector<std::string>& terms) {
    std::string phrase;
    for (const std::string& term : terms) phrase += (phrase.empty() ? "" : " ") + term;
    return phrase;
}

Task<void> answerIds(Actions actions, std::string phrase, Invocation invocation) {
    auto preparing = KnownTasks::ready(actions->known);
    co_await preparing;
    GVariantBuilder ids;
    g_variant_builder_init(&ids, G_VARIANT_TYPE_STRING_ARRAY);
    for (const Finding& finding : DesktopSearch::find(*actions, phrase)) {
        g_variant_builder_add(&ids, "s", finding.id.c_str());
    }
    invocation.answer(g_variant_new("(as)", &ids));
}

GVariant* metas(const AutomationActions& actions, const std::vector<std::string>& ids) {
    GVariantBuilder list;
    g_variant_builder_init(&list, G_VARIANT_TYPE("aa{sv}"));
    for (const std::string& id : ids) {
        const auto finding = DesktopSearch::describe(actions, id);
        if (!finding) continue;
        GVariantBuilder entry;
        g_variant_builder_init(&entry, G_VARIANT_TYPE_VARDICT);
        g_variant_builder_add(&entry, "{sv}", "id", g_variant_new_string(finding->id.c_str()));
        g_variant_builder_add(&entry, "{sv}", "name", g_variant_new_string(shown(finding->title).c_str()));
        g_variant_builder_add(&entry, "{sv}", "description", g_variant_new_string(shown(finding->detail).c_str()));
        g_variant_builder_add(&entry, "{sv}", "gicon", g_variant_new_string(PARVELA_APP_ID));
        g_variant_builder_add_value(&list, g_variant_builder_end(&entry));
    }
    return g_variant_new("(aa{sv})", &list);
}

/// Kinds of matches as KRunner counts them.
constexpr int possibleMatch = 30;
constexpr int exactMatch = 100;

Task<void> answerMatches(Actions actions, std::string phrase, Invocation invocation) {
    auto preparing = KnownTasks::ready(actions->known);
    co_await preparing;
    GVariantBuilder matches;
    g_variant_builder_init(&matches, G_VARIANT_TYPE("a(sssida{sv})"));
    double relevance = 0.9;
    for (const Finding& finding : DesktopSearch::find(*actions, phrase)) {
        GVariantBuilder properties;
        g_variant_builder_init(&properties, G_VARIANT_TYPE_VARDICT);
        g_variant_builder_add(&properties, "{sv}", "subtext", g_variant_new_string(shown(finding.detail).c_str()));
        g_variant_builder_add(&properties, "{sv}", "category", g_variant_new_string("Parvela"));
        g_variant_builder_add(&matches, "(sssida{sv})", finding.id.c_str(), shown(finding.title).c_str(),
                              PARVELA_APP_ID, finding.isExact ? exactMatch : possibleMatch,
                              finding.isExact ? 1.0 : relevance, &properties);
        // KRunner sorts by this; the order of find() stays.
        relevance -= 0.02;
    }
    invocation.answer(g_variant_new("(a(sssida{sv}))", &matches));
}

/// Desktops do not wait for what they start.
void activate(const Actions& actions, GVariant* values, Invocation invocation) {
    DesktopSearch::activate(actions, text(values, 0), invocation.ticket());
    invocation.answer(nullptr);
}

}  // namespace

void ShellSearchProvider::call(const Actions& actions, const std::string& method, GVariant* values,
                               Invocation invocation) {
    if (method == "GetInitialResultSet") {
        answerIds(actions, phraseOf(texts(values, 0)), std::move(invocation)).detach();
    } else if (method == "GetSubsearchResultSet") {
        answerIds(actions, phraseOf(texts(values, 1)), std::move(invocation)).detach();
    } else if (method == "GetResultMetas") {
        invocation.answer(metas(*actions, texts(values, 0)));
    } else if (method == "ActivateResult") {
        activate(actions, values, std::move(invocation));
    } else {
        DesktopSearch::open(*actions, phraseOf(texts(values, 0)));
        invocation.answer(nullptr);
    }
}

void PlasmaRunner::call(const Actions& actions, const std::string& method, GVariant* values, Invocation invocation) {
    if (method == "Match") {
        answerMatches(actions, text(values, 0), std::move(invocation)).detach();
    } else if (method == "Run") {
        activate(actions, values, std::move(invocation));
    } else if (method == "Actions") {
        invocation.answer(g_variant_new("(a(sss))", nullptr));
    } else {
        invocation.answer(nullptr);
    }
}

}  // namespace parvela
