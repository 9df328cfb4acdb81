#include "Domain/Contains.h"
#include "Store/Database.h"
#include "Store/TaskQueries.h"

#include <algorithm>

namespace parvela::service {
namespace {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Not;

/// The lines of SQLite's query plan.
std::vector<std::string> planOf(Database& database, const std::string& sql) {
    std::vector<std::string> lines;
    auto rows = database.query("EXPLAIN QUERY PLAN " + sql);
    while (rows.step()) lines.push_back(rows.text(3));
    return lines;
}

TEST(QueryPlan, listsNeverReadTheWholeTable) {
    Database database(":memory:");
    for (const std::string& sql : TaskQueries::statements()) {
        const auto plan = planOf(database, sql);
        ASSERT_FALSE(plan.empty());
        for (const std::string& line : plan) {
            SCOPED_TRACE(sql + "\n  " + line);
            // Boards are few; everything else must be found, not read through.
            const bool scansOther =
                line.starts_with("SCAN") && line != "SCAN b" && !line.contains("VIRTUAL TABLE INDEX");
            EXPECT_FALSE(scansOther);
            EXPECT_THAT(line, Not(HasSubstr("AUTOMATIC")));
        }
    }
}

TEST(QueryPlan, eachListWalksTheIndexMadeForIt) {
    Database database(":memory:");
    const std::vector<std::string> indexes = {"INDEX tasks_open ",     "INDEX assigned_open ",
                                              "INDEX tasks_done ",     "INDEX assigned_done ",
                                              "INDEX tasks_done_due ", "INDEX assigned_done_due "};
    const auto statements = TaskQueries::statements();
    ASSERT_GE(statements.size(), indexes.size());
    for (std::size_t i = 0; i < indexes.size(); ++i) {
        const auto plan = planOf(database, statements[i]);
        EXPECT_TRUE(std::ranges::any_of(plan, [&](const std::string& line) { return line.contains(indexes[i]); }))
            << indexes[i] << " is not used by\n"
            << statements[i] << "\n"
            << ::testing::PrintToString(plan);
    }
    // Full-text hits come newest first by themselves; sorting them would read them all.
    for (const std::string& line : planOf(database, statements.back()))
        EXPECT_THAT(line, Not(HasSubstr("TEMP B-TREE")));
}

}  // namespace
}  // namespace parvela::service
