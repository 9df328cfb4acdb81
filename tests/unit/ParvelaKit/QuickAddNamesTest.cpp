#include "QuickAdd/Characters.h"
#include "QuickAdd/IdList.h"
#include "QuickAdd/NameKeys.h"
#include "QuickAdd/Names.h"
#include "support/QuickAddSamples.h"

#include <ParvelaKit/Text.h>

namespace parvela::QuickAdd {
namespace {

const std::vector<std::string> nameParts{"ab", "A",      "b", "Ab", "\u00e9", "e\u0301", "e",      " ",
                                         " ",  "\u00a0", "_", "-",  "--",     "\u212a",  "\u0130", "c"};

std::string generatedName(samples::LineGenerator& random) {
    std::string name;
    for (int i = 0; i < 4; ++i) name += random.one(nameParts);
    return random.chance(10) ? std::string() : name;
}

/// Makes the search go over to its index.
template <class Search>
void exhaust(Search& search, std::size_t names) {
    for (std::size_t i = 0; i < 400 + 100 * names; ++i) search.find(u"zz");
}

const QuickAddMember* slowFind(const std::vector<QuickAddMember>& members, std::u16string_view handle,
                               std::u16string_view key) {
    std::vector<const QuickAddMember*> whole;
    std::vector<const QuickAddMember*> beginning;
    for (const auto& member : members) {
        const auto keys = memberKeys(member);
        if (std::ranges::find(keys, key) != keys.end()) whole.push_back(&member);
        const bool begins =
            std::ranges::any_of(keys, [key](const auto& candidate) { return candidate.starts_with(key); });
        if (begins) beginning.push_back(&member);
    }
    if (!whole.empty()) return whole.size() == 1 ? whole.front() : nullptr;
    return beginning.size() == 1 && handle.size() >= 2 ? beginning.front() : nullptr;
}

const QuickAddLabel* slowFind(const std::vector<QuickAddLabel>& labels, std::u16string_view name) {
    std::vector<const QuickAddLabel*> loose;
    for (const auto& label : labels) {
        const auto known = labelKey(toUtf16(label.name));
        if (known == labelKey(name)) return &label;
        if (looseLabelKey(known) == looseLabelKey(labelKey(name))) loose.push_back(&label);
    }
    return loose.size() == 1 ? loose.front() : nullptr;
}

TEST(QuickAddNames, findMembersTheSameWayInPlaceAndByIndex) {
    samples::LineGenerator random(11);
    std::size_t found = 0;
    for (int round = 0; round < 300; ++round) {
        std::vector<QuickAddMember> members;
        for (int i = 0; i < 4; ++i) {
            members.push_back({"id", generatedName(random),
                               random.chance(2) ? std::optional(generatedName(random) + "@x") : std::nullopt});
        }
        MemberSearch indexed(members);
        exhaust(indexed, members.size());
        for (int i = 0; i < 20; ++i) {
            const std::u16string handle =
                toUtf16(parvela::lowercased(random.one(nameParts) + (random.chance(2) ? random.one(nameParts) : "")));
            if (handle.empty()) continue;
            const auto* expected = slowFind(members, handle, folded(handle));
            EXPECT_EQ(MemberSearch(members).find(handle), expected) << toUtf8(handle);
            EXPECT_EQ(indexed.find(handle), expected) << toUtf8(handle);
            found += expected != nullptr;
        }
    }
    EXPECT_GT(found, 500U);
}

TEST(QuickAddNames, findLabelsTheSameWayInPlaceAndByIndex) {
    samples::LineGenerator random(12);
    std::size_t found = 0;
    for (int round = 0; round < 300; ++round) {
        std::vector<QuickAddLabel> labels;
        for (int i = 0; i < 5; ++i) labels.push_back({"id", generatedName(random)});
        LabelSearch indexed(labels);
        exhaust(indexed, labels.size());
        for (int i = 0; i < 20; ++i) {
            const std::string typed = random.chance(2) ? random.one(labels).name : generatedName(random);
            const std::u16string name = toUtf16(parvela::trimmed(typed));
            if (name.empty()) continue;
            const auto* expected = slowFind(labels, name);
            EXPECT_EQ(LabelSearch(labels).find(name), expected) << toUtf8(name);
            EXPECT_EQ(indexed.find(name), expected) << toUtf8(name);
            found += expected != nullptr;
        }
    }
    EXPECT_GT(found, 1000U);
}

TEST(QuickAddNames, keepEachIdOnceHoweverManyThereAre) {
    std::vector<std::string> ids;
    IdList list(ids);
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 1000; ++i) list.add("id-" + std::to_string(i));
    }
    ASSERT_EQ(ids.size(), 1000U);
    for (std::size_t i = 0; i < ids.size(); ++i) EXPECT_EQ(ids[i], "id-" + std::to_string(i));
}

}  // namespace
}  // namespace parvela::QuickAdd
