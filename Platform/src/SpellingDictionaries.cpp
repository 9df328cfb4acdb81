#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Text.h>
#include <Platform/SpellingDictionaries.h>

#include <algorithm>
#include <array>
#include <enchant.h>
#include <set>

#include <unicode/uloc.h>

namespace parvela {

using Broker = GLibPtr<EnchantBroker, enchant_broker_free>;

std::vector<SpellingDictionary> spellingDictionaries() {
    std::set<std::string> tags;  // several checkers may offer the same language
    const Broker broker(enchant_broker_init());
    enchant_broker_list_dicts(
        broker.get(),
        [](const char* tag, const char*, const char*, const char*, void* found) {
            static_cast<std::set<std::string>*>(found)->emplace(tag);
        },
        &tags);
    std::vector<SpellingDictionary> dictionaries;
    for (const std::string& tag : tags) dictionaries.push_back({tag, languageName(tag)});
    std::ranges::sort(dictionaries, {}, &SpellingDictionary::name);
    return dictionaries;
}

std::string languageName(const std::string& tag) {
    constexpr std::size_t longest = 120;
    std::array<char16_t, longest> name{};
    UErrorCode status = U_ZERO_ERROR;
    const auto length = uloc_getDisplayName(tag.c_str(), "en", name.data(), longest, &status);
    if (U_FAILURE(status) || length <= 0) return tag;
    return toUtf8({name.data(), static_cast<std::size_t>(length)});
}

}  // namespace parvela
