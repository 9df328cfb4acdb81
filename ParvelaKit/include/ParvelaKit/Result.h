#pragma once

#include <expected>

namespace parvela {

/// A value or the typed failure that stood in its way. Exceptions are kept for programming errors.
template <class T, class E>
using Result = std::expected<T, E>;

template <class E>
using Failure = std::unexpected<E>;

}  // namespace parvela
