#pragma once

#include <Platform/DBus.h>

#include <cstddef>
#include <memory>

namespace parvela::dbus {

/// Keeps other programs from filling our memory over a connection: a message that is too large, or a call when too much
/// waits for the main loop already, is refused on the connection's own thread. Only what answers our own calls passes
/// at any size.
class IncomingLimit {
public:
    /// Bytes of all values of one message.
    static constexpr std::size_t largestMessage = std::size_t{256} * 1024;
    /// Bytes of the calls that wait for the main loop.
    static constexpr std::size_t mostWaiting = 16 * largestMessage;

    IncomingLimit() = default;
    explicit IncomingLimit(const Bus& bus);
    IncomingLimit(IncomingLimit&&) noexcept = default;
    IncomingLimit& operator=(IncomingLimit&&) noexcept = default;
    ~IncomingLimit() = default;

private:
    struct Link;
    struct Ending {
        void operator()(Link* link) const noexcept;
    };
    std::unique_ptr<Link, Ending> link_;
};

}  // namespace parvela::dbus
