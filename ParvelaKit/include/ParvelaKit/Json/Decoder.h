#pragma once

#include <ParvelaKit/Json/Fields.h>

#include <optional>
#include <string>

namespace parvela::json {

/// Reads one JSON document into a record; none when it is not wholly valid JSON in UTF-8, when a value has the wrong
/// type, or when a required field is absent or null.
///
/// Keys may come in any order and in either spelling, and unknown ones are ignored. Of repeated keys each must be of
/// the field's type and the last one counts. An integer may be written as 3.0 when it is exact; true and false are no
/// numbers. Nothing may follow the document. Nesting below unknown keys is limited.
///
/// Available for every record of ParvelaKit/Records.
template <Record T>
std::optional<T> decode(const std::string& document);

/// The text of "message" inside the object "error" of a failed call's answer; empty when the body does not hold one.
std::string decodeErrorMessage(const std::string& body);

}  // namespace parvela::json
