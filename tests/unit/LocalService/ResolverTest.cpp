#include "Domain/Resolver.h"

namespace parvela::service {
namespace {

using ::testing::HasSubstr;

std::vector<Account> people() {
    return {{.id = {1}, .name = "Robin Hale", .email = "robin@example.org"},
            {.id = {2}, .name = "Rosa Diaz", .email = "r.diaz@example.org"},
            {.id = {3}, .name = "Zoë Ånäs", .email = "zoe@example.org"},
            {.id = {4}, .name = "Sam Okafor", .email = "sam.o@example.org"},
            {.id = {5}, .name = "Sam Park", .email = "park@example.org"},
            {.id = {6}, .name = "李 雷", .email = "lei@example.org"}};
}

TEST(Resolver, findsPeopleByEveryNameTheyHave) {
    const struct {
        const char* text;
        int person;
    } cases[] = {
        {"usr_2", 2},      {"Robin Hale", 1}, {" robin hale ", 1},       {"ROBIN", 1}, {"@robin", 1},  {"robinhale", 1},
        {"robin_hale", 1}, {"r.diaz", 2},     {"R.Diaz@Example.org", 2}, {"zoë", 3},   {"ZOË", 3},     {"zoe", 3},
        {"zoë ånäs", 3},   {"ros", 2},        {"sam okafor", 4},         {"sam.o", 4}, {"sampark", 5}, {"park", 5},
        {"李", 6},         {"李雷", 6},       {"sam-park", 5},           {"sam.", 4},
    };
    for (const auto& [text, person] : cases) {
        const auto found = resolvePerson(text, people());
        ASSERT_TRUE(found) << text << ": " << found.error().message;
        EXPECT_EQ(found->value, person) << text;
    }
}

TEST(Resolver, tellsWhyAPersonWasNotFound) {
    const auto problemWith = [](const std::string& text) {
        const auto found = resolvePerson(text, people());
        return found ? "found" : found.error().message;
    };
    // One letter is no beginning of a name.
    for (const std::string& text : std::vector<std::string>{"nobody", "", "@", "r", "usr_99", std::string(5000, 'x'),
                                                            "'; DROP TABLE accounts; --"}) {
        EXPECT_THAT(problemWith(text), HasSubstr("No one called")) << text;
        EXPECT_LT(problemWith(text).size(), 500U);
    }
    for (const char* text : {"ro", "sam"}) EXPECT_THAT(problemWith(text), HasSubstr("matches more than one person"));
    EXPECT_THAT(problemWith("ro"), HasSubstr("Robin Hale, Rosa Diaz"));
}

TEST(Resolver, findsLabelsExactlyFirstAndLooselyThen) {
    const BoardRow board{.id = {1}, .name = "Launch"};
    const std::vector<LabelRow> labels = {{{1}, {1}, "Design", "red"},
                                          {{2}, {1}, "Design Review", "red"},
                                          {{3}, {1}, "in-progress", "red"},
                                          {{4}, {1}, "in progress", "red"},
                                          {{5}, {1}, "Größe", "red"}};
    const struct {
        const char* text;
        int label;  ///< 0 for none
    } cases[] = {{"design", 1},        {"DESIGN REVIEW", 2},
                 {"design_review", 2}, {"design--review", 2},
                 {"lbl_2", 2},         {"in-progress", 3},
                 {"in progress", 4},   {"in_progress", 0},
                 {"größe", 5},         {"GRÖSSE", 0},
                 {"desig", 0},         {"", 0},
                 {"lbl_9", 0},         {"_", 0}};
    for (const auto& [text, label] : cases) {
        const auto found = resolveLabel(text, board, labels);
        EXPECT_EQ(found ? found->value : 0, label) << text;
        if (!found) EXPECT_THAT(found.error().message, HasSubstr("“Launch” has no label")) << text;
    }
}

}  // namespace
}  // namespace parvela::service
