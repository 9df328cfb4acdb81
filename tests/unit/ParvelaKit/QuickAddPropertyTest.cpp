#include "support/QuickAddProperties.h"
#include "support/QuickAddSamples.h"

#include <ParvelaKit/QuickAddParser.h>
#include <ParvelaKit/Text.h>

namespace parvela {
namespace {

TEST(QuickAddProperties, holdForOrdinaryAndWildLines) {
    samples::LineGenerator lines(20250610);
    const std::vector<QuickAddContext> contexts{samples::boardContext(), samples::unknownLists()};
    std::size_t tokens = 0;
    for (std::size_t i = 0; i < 1500; ++i) {
        const std::string line = i % 3 == 0 ? lines.ordinaryLine(20 + i % 80) : lines.wildLine(1 + i % 12);
        for (const auto& context : contexts) {
            EXPECT_EQ(properties::violation(line, context), std::nullopt) << line;
            tokens += QuickAdd::parse(line, context).tokens.size();
        }
    }
    EXPECT_GT(tokens, 1500U);  // the lines are worth the name
}

TEST(QuickAddProperties, holdForLongLinesOfOneKind) {
    auto pieces = samples::words("# \" #\" #\u201c @ @a #a a , x \u00e9 \u0130 on 5 !!! #\"a\" ( @rob");
    for (const auto& word : std::vector(pieces)) pieces.push_back(word + " ");
    pieces.insert(pieces.end(), {" ", "every mon ", "due on ", "#\"design review\" "});
    for (const auto& piece : pieces) {
        std::string line;
        while (line.size() < 3000) line += piece;
        for (const auto& context : {samples::boardContext(), samples::unknownLists()}) {
            EXPECT_EQ(properties::violation(line, context), std::nullopt) << piece;
        }
    }
}

}  // namespace
}  // namespace parvela
