#pragma once

#include <optional>
#include <utility>
#include <variant>

namespace parvela {

/// What an edit does to one field: `set` gives it a new value, `keep` leaves it, `clear` empties it.
///
/// In JSON a kept field's key is absent and a cleared one's value is null.
template <class T>
class Patch {
public:
    static Patch set(T value) { return Patch(State(std::in_place_index<0>, std::move(value))); }
    static Patch keep() { return Patch(State(std::in_place_index<1>)); }
    static Patch clear() { return Patch(State(std::in_place_index<2>)); }

    /// Keeps.
    Patch() = default;

    bool isKeep() const noexcept { return state_.index() == 1; }
    bool isClear() const noexcept { return state_.index() == 2; }
    /// The new value, or null when nothing is set.
    const T* value() const noexcept { return std::get_if<0>(&state_); }

    bool operator==(const Patch&) const = default;

private:
    struct Keep {
        bool operator==(const Keep&) const = default;
    };
    struct Clear {
        bool operator==(const Clear&) const = default;
    };
    using State = std::variant<T, Keep, Clear>;

    explicit Patch(State state) : state_(std::move(state)) {}

    State state_{std::in_place_index<1>};
};

}  // namespace parvela
