#include "QuickAdd/QuickAddDrafts.h"
#include "support/MemoryStore.h"

using namespace parvela;
using Draft = QuickAddSession::Draft;

TEST(QuickAddDrafts, keepsWhatIsTypedWithThePiecesGivenBack) {
    for (const Draft& draft : {Draft{"Write brief tomorrow", {}}, Draft{"für 🎉 \"monday\" \\", {{0, 3}, {7, 15}}}}) {
        test::MemoryStore store;
        QuickAddDrafts::write(store, draft);
        EXPECT_EQ(QuickAddDrafts::read(store), draft);
    }
}

TEST(QuickAddDrafts, writesOnlyWhatChangedAndLeavesNothingOfAnEmptyOne) {
    test::MemoryStore store;
    QuickAddDrafts::write(store, {});
    EXPECT_EQ(store.writes, 0);
    QuickAddDrafts::write(store, {"a", {}});
    QuickAddDrafts::write(store, {"a", {}});
    EXPECT_EQ(store.writes, 1);
    QuickAddDrafts::write(store, {});
    EXPECT_TRUE(store.values.empty());
    EXPECT_EQ(QuickAddDrafts::read(store), Draft{});
}

TEST(QuickAddDrafts, whatMakesNoSenseReadsAsFarAsItDoes) {
    const struct {
        StoredValue stored;
        Draft expected;
    } cases[] = {
        {std::string("no json"), {}},
        {std::string(R"(["text"])"), {}},
        {std::string(R"({"literals":[[0,1]]})"), {}},
        {std::string(R"({"text":7})"), {}},
        {std::string(R"({"text":"a"})"), {"a", {}}},
        {std::string(R"({"text":"a","literals":{"0":1}})"), {"a", {}}},
        {std::string(R"({"text":"ab","literals":[[0,1],[1],"x",[-1,2],[0.5,1],[1,2,3]]})"), {"ab", {{0, 1}}}},
        {true, {}},
    };
    for (const auto& [stored, expected] : cases) {
        test::MemoryStore store;
        store.set("quickAddDraft", stored);
        EXPECT_EQ(QuickAddDrafts::read(store), expected);
    }
}
