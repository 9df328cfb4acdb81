// The quick-add parser on any bytes: everything that must hold for every line, with known and unknown lists, and with
// pieces taken as plain text.

#include "support/QuickAddProperties.h"
#include "support/QuickAddSamples.h"

#include <ParvelaKit/QuickAddParser.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace parvela;
    static const QuickAddContext contexts[] = {samples::boardContext(), samples::unknownLists()};
    const std::string line(reinterpret_cast<const char*>(data), size);
    for (const auto& context : contexts) {
        if (const auto violation = properties::violation(line, context)) {
            std::fprintf(stderr, "%s\n", violation->c_str());
            std::abort();
        }
    }
    if (size >= 2) {
        const QuickAddRange literal{data[0], data[1]};
        for (const auto& token : QuickAdd::parse(line, contexts[0], {&literal, 1}).tokens) {
            if (literal.start < literal.end && token.start < literal.end && literal.start < token.end) {
                // Only a range that touches no word, such as blanks inside a quoted label, may lie inside a token.
                const auto text = toUtf16(line).substr(literal.start, literal.end - literal.start);
                if (!trimmed(toUtf8(text)).empty()) std::abort();
            }
        }
    }
    return 0;
}
