#pragma once

#include "Http/Message.h"

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Result.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include <libsoup/soup.h>

namespace parvela::service {

/// What a server answers with. Both functions run on the main loop's thread.
struct HttpSite {
    /// Looks at a request whose body has not been read. An error is the answer, and the body is not kept.
    std::function<std::optional<HttpError>(const Request&)> admit;
    /// How many bytes the request's body may have.
    std::function<std::size_t(const Request&)> bodyLimit;
    std::function<Response(Request)> handle;
};

/// HTTP/1.1 on the loopback interface only, both address families where the machine has them.
class HttpServer {
public:
    HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;
    ~HttpServer();

    /// Binds the port, 0 for any free one; the port it got, or why it could not. Requests wait until serve().
    Result<std::uint16_t, std::string> listen(std::uint16_t port);
    void serve(HttpSite site);

private:
    void onHeaders(SoupServerMessage* message);
    void onRequest(SoupServerMessage* message);

    Ref<SoupServer> server_;
    HttpSite site_;
    Connection started_;
};

}  // namespace parvela::service
