#pragma once

#include <ParvelaKit/QuickAddRecords.h>

#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

/// Generated lines of quick add, for tests, fuzzing and measurements. The same seed gives the same lines.
namespace parvela::samples {

inline QuickAddContext boardContext() {
    QuickAddContext context{.today = {2025, 6, 10}};  // a Tuesday
    context.members = {{"u-robin", "Robin Ray", "robin.ray@example.com"}, {"u-rosa", "Rosa", std::nullopt},
                       {"u-jose", "José Núñez", "jn@example.com"},        {"u-mary", "Mary Ann O'Neil", "mary"},
                       {"u-sam", "Sam Smith", "sam@example.com"},         {"u-sam2", "Sam Stone", "stone@example.com"}};
    context.labels = {{"l-design", "Design"}, {"l-review", "Design Review"}, {"l-bug", "bug"},
                      {"l-aerger", "Ärger"},  {"l-api", "API_v2"},           {"l-api2", "api-v2"}};
    return context;
}

inline QuickAddContext unknownLists() {
    return {.today = {2025, 6, 10}};
}

/// The words of a text, which blanks part.
inline std::vector<std::string> words(const std::string& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

class LineGenerator {
public:
    explicit LineGenerator(unsigned seed) : random_(seed) {}

    /// Words of a to-do list with dates, times and names strewn in: what people type.
    std::string ordinaryLine(std::size_t length) {
        static const auto plain = words(
            "Write brief call the bank about invoice fix login page for review slides with buy milk and bread book "
            "flights to Lisbon send report update website prepare demo clean kitchen draft email check server logs "
            "plan "
            "sprint order cake repair bike pay rent renew");
        static const std::vector<std::string> meaningful{
            "tomorrow",     "on friday", "next week",      "due jun 10",   "in 3 days",
            "at 9:30am",    "5 pm",      "17:45",          "every monday", "!high",
            "p2",           "#design",   "@robin",         "by eom",       "tonight",
            "weekly",       "#bug",      "@sam",           "6/30",         "2025-07-01",
            "noon",         "next tue,", "(this weekend)", "@jos\u00e9",   "#\"Design Review\"",
            "12th of july", "every day", "@mary"};
        std::string line = one(plain);
        while (line.size() + 4 < length) {
            line += ' ';
            line += one(chance(4) ? meaningful : plain);
        }
        return line;
    }

    /// Pieces in any order, well formed and not, with hostile characters in between.
    std::string wildLine(std::size_t pieces) {
        static const std::vector<std::string> fragments = [] {
            auto all = words(
                "today tonight tomorrow tmrw eow eom next this in end of the on by at due and every everyday daily "
                "weekday weekdays weekly monthly day days week weeks month months noon midnight am pm a.m. p.m a an "
                "two twelve jan february sept may sun sunday sat Mon THURS !high !1 p4 P1 !med !! 1 3rd 22nd 31 32nd "
                "2026 20\u0662\u0665 2025-06-30 2025-02-30 6/9 6/10/26 13/1 2/29 12am 13pm 5:30 9:60 9:30pm 24:00 "
                "\u0665pm 0 999 @rob @ro @sam @samsmith @jos\u00e9 @jose\u0301 @ @stone @nobody #design #design_review "
                "#api-v2 #API_v2 # #42 #\u0664\u0662 #\" #\u201c \" \u201d #\u201c\u00e4rger\u201d #\"\" brief Write "
                "\u0130stanbul \u03a3\u0391\u03a3 \U0001f600 e\u0301 , . ; : ! ? ( ) [ ] ' \u2019 - \u2014 \xff");
            all.insert(all.end(), {"#\"Design Review\"", "#\"no such\"", std::string(1, '\0')});
            return all;
        }();
        static const std::vector<std::string> blanks{" ",  " ",      " ",      " ",      " ",  "  ",
                                                     "\t", "\u00a0", "\u2028", "\u3000", "\n", ""};
        std::string line = chance(8) ? one(blanks) : std::string();
        for (std::size_t i = 0; i < pieces; ++i) {
            line += one(fragments);
            if (chance(6)) line += one(fragments);
            line += one(blanks);
        }
        return line;
    }

    bool chance(unsigned outOf) { return random_() % outOf == 0; }

    template <class Item>
    const Item& one(const std::vector<Item>& items) {
        return items[random_() % items.size()];
    }

private:
    std::mt19937 random_;  // fixed by the standard, unlike its distributions
};

}  // namespace parvela::samples
