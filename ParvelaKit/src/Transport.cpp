#include <ParvelaKit/Text.h>
#include <ParvelaKit/Transport.h>

#include <algorithm>

namespace parvela {

std::optional<std::string> HttpResponse::header(std::string_view name) const {
    const auto found = std::ranges::find_if(
        headers, [name](const HttpHeader& header) { return equalsIgnoringAsciiCase(header.name, name); });
    return found == headers.end() ? std::nullopt : std::optional(found->value);
}

}  // namespace parvela
