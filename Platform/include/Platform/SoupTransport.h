#pragma once

#include <ParvelaKit/Transport.h>

#include <chrono>
#include <cstddef>
#include <memory>

namespace parvela {

/// Sends the kit's requests with libsoup: the desktop's proxies and certificates, connections kept alive between
/// requests.
///
/// Nothing is stored: no cookies, no cache, no passwords. Redirects are answers like any other. A machine without a
/// network fails at once. Anything but http and https is TransportError::badURL before a byte is sent, and so is a
/// method or header that HTTP cannot carry.
///
/// An answer counts only when it is whole: one that breaks off after its first line is TransportError::invalidResponse,
/// as are answers beyond the limits. Header values that are no UTF-8 come with U+FFFD in place of what is wrong.
///
/// Runs on the main context of the calling thread, which must keep turning.
class SoupTransport {
public:
    struct Limits {
        /// Longest silence of the network.
        std::chrono::milliseconds idle{std::chrono::seconds{20}};
        /// From the call to the last byte of the answer. A request's own time-out counts when it is shorter.
        std::chrono::milliseconds whole{std::chrono::seconds{40}};
        /// Bytes of the body after decompression.
        std::size_t body = std::size_t{64} * 1024 * 1024;
    };

    SoupTransport() : SoupTransport(Limits{}) {}
    explicit SoupTransport(Limits limits);

    Task<Result<HttpResponse, TransportError>> operator()(HttpRequest request, std::stop_token stop) const;

    /// The one session of this process, with the limits above; made at its first request.
    static Transport shared();

private:
    class Session;
    std::shared_ptr<Session> session_;
};

}  // namespace parvela
