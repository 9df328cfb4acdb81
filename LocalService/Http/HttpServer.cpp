#include "Http/HttpServer.h"

#include <ParvelaKit/Url.h>

#include <fmt/format.h>
#include <gio/gio.h>

namespace parvela::service {

namespace {

constexpr const char* receivedBytes = "parvela-received-bytes";

/// How much of a refused body is read and thrown away before the connection is cut: enough for a client that sends
/// first and reads the answer afterwards.
constexpr std::size_t drainLimit = 64U << 20;

Request readRequest(SoupServerMessage* message) {
    Request request;
    request.method = soup_server_message_get_method(message);
    GUri* const uri = soup_server_message_get_uri(message);
    request.path = g_uri_get_path(uri);
    std::string_view rest = request.path;
    while (rest.starts_with('/')) {
        rest.remove_prefix(1);
        const auto end = std::min(rest.find('/'), rest.size());
        // A piece that cannot be decoded stays as it is and then matches nothing.
        const std::string_view piece = rest.substr(0, end);
        request.segments.push_back(percentDecode(piece).value_or(std::string(piece)));
        rest.remove_prefix(end);
    }
    if (const char* query = g_uri_get_query(uri)) {
        for (const QueryItem& item : decodeQuery(query).value_or(std::vector<QueryItem>())) {
            request.query.emplace_back(item.name, item.value.value_or(""));
        }
    }
    soup_message_headers_foreach(
        soup_server_message_get_request_headers(message),
        [](const char* name, const char* value, gpointer headers) {
            static_cast<decltype(request.headers)*>(headers)->emplace_back(name, value);
        },
        &request.headers);
    return request;
}

void writeResponse(SoupServerMessage* message, const Response& response) {
    soup_server_message_set_status(message, static_cast<guint>(response.status), nullptr);
    SoupMessageHeaders* const headers = soup_server_message_get_response_headers(message);
    for (const auto& [name, value] : response.headers)
        soup_message_headers_append(headers, name.c_str(), value.c_str());
    soup_message_headers_replace(headers, "X-Content-Type-Options", "nosniff");
    soup_message_headers_replace(headers, "Cross-Origin-Resource-Policy", "same-origin");
    if (!soup_message_headers_get_one(headers, "Cache-Control")) {
        soup_message_headers_append(headers, "Cache-Control", "no-store");
    }
    if (response.stream) {
        response.stream(message);
        return;
    }
    if (!response.contentType.empty()) {
        soup_server_message_set_response(message, response.contentType.c_str(), SOUP_MEMORY_COPY, response.body.data(),
                                         response.body.size());
    }
}

}  // namespace

HttpServer::HttpServer()
    : server_(Ref<SoupServer>::adopt(soup_server_new("raw-paths", gboolean{TRUE}, static_cast<const char*>(nullptr)))) {
}

HttpServer::~HttpServer() {
    soup_server_disconnect(server_.get());
}

Result<std::uint16_t, std::string> HttpServer::listen(std::uint16_t port) {
    const auto bind = [&](GSocketFamily family, std::uint16_t wanted) -> ErrorPtr {
        const auto loopback = Ref<GInetAddress>::adopt(g_inet_address_new_loopback(family));
        const auto address = Ref<GSocketAddress>::adopt(g_inet_socket_address_new(loopback.get(), wanted));
        ErrorPtr error;
        soup_server_listen(server_.get(), address.get(), SoupServerListenOptions{}, error.out());
        return error;
    };
    const auto explain = [&](const GError* error) {
        return g_error_matches(error, G_IO_ERROR, G_IO_ERROR_ADDRESS_IN_USE)
                   ? fmt::format(
                         "Port {} is already in use. Is Parvela running already? Stop it or choose another port.", port)
                   : fmt::format("Port {} can't be opened: {}", port, error->message);
    };
    if (const ErrorPtr error = bind(G_SOCKET_FAMILY_IPV4, port)) return Failure(explain(error.get()));

    GSList* const uris = soup_server_get_uris(server_.get());
    if (uris) port = static_cast<std::uint16_t>(g_uri_get_port(static_cast<GUri*>(uris->data)));
    g_slist_free_full(uris, reinterpret_cast<GDestroyNotify>(g_uri_unref));

    // "localhost" may mean ::1. A machine without IPv6 does without; a stranger on that port must not get our callers.
    const ErrorPtr error = bind(G_SOCKET_FAMILY_IPV6, port);
    if (error && g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_ADDRESS_IN_USE)) {
        return Failure(explain(error.get()));
    }
    return port;
}

void HttpServer::serve(HttpSite site) {
    site_ = std::move(site);
    // libsoup 3.2 never closes a kept-alive connection whose client has gone, so its sockets would run out. A new
    // connection for each request costs next to nothing on loopback. Set this early, so that it holds for libsoup's own
    // answers too.
    started_ = connect<void(SoupServer*, SoupServerMessage*)>(
        server_.get(), "request-started", [](SoupServer*, SoupServerMessage* message) {
            soup_message_headers_replace(soup_server_message_get_response_headers(message), "Connection", "close");
        });
    soup_server_add_early_handler(
        server_.get(), nullptr,
        [](SoupServer*, SoupServerMessage* message, const char*, GHashTable*, gpointer self) {
            static_cast<HttpServer*>(self)->onHeaders(message);
        },
        this, nullptr);
    soup_server_add_handler(
        server_.get(), nullptr,
        [](SoupServer*, SoupServerMessage* message, const char*, GHashTable*, gpointer self) {
            static_cast<HttpServer*>(self)->onRequest(message);
        },
        this, nullptr);
}

void HttpServer::onHeaders(SoupServerMessage* message) {
    const Request request = readRequest(message);
    const std::size_t limit = site_.bodyLimit(request);
    const auto refuse = [message](const HttpError& error) {
        writeResponse(message, error.response());
        soup_message_body_set_accumulate(soup_server_message_get_request_body(message), FALSE);
    };
    const HttpError tooLarge{413, "That is too large to send."};
    SoupMessageHeaders* const headers = soup_server_message_get_request_headers(message);
    const goffset announced = soup_message_headers_get_content_length(headers);
    if (auto error = site_.admit(request)) {
        refuse(*error);
    } else if (announced > 0 && static_cast<std::size_t>(announced) > limit) {
        refuse(tooLarge);
    }
    // A body without an announced length is counted as it comes.
    g_signal_connect_data(
        message, "got-chunk", G_CALLBACK((+[](SoupServerMessage* source, GBytes* chunk, gpointer allowed) {
            auto* const object = G_OBJECT(source);
            const auto received = GPOINTER_TO_SIZE(g_object_get_data(object, receivedBytes)) + g_bytes_get_size(chunk);
            g_object_set_data(object, receivedBytes, GSIZE_TO_POINTER(received));
            if (received > *static_cast<std::size_t*>(allowed)) {
                soup_message_body_set_accumulate(soup_server_message_get_request_body(source), FALSE);
            }
            if (received > drainLimit) g_socket_close(soup_server_message_get_socket(source), nullptr);
        })),
        new std::size_t(limit), [](gpointer allowed, GClosure*) { delete static_cast<std::size_t*>(allowed); },
        GConnectFlags{});
}

void HttpServer::onRequest(SoupServerMessage* message) {
    if (soup_server_message_get_status(message) != SOUP_STATUS_NONE) return;  // refused by its headers already
    Request request = readRequest(message);
    SoupMessageBody* const body = soup_server_message_get_request_body(message);
    if (GPOINTER_TO_SIZE(g_object_get_data(G_OBJECT(message), receivedBytes)) > site_.bodyLimit(request)) {
        writeResponse(message, HttpError{413, "That is too large to send."}.response());
        return;
    }
    if (const BytesPtr bytes(soup_message_body_flatten(body)); bytes) {
        gsize size = 0;
        const auto* data = static_cast<const char*>(g_bytes_get_data(bytes.get(), &size));
        if (data) request.body.assign(data, size);
    }
    writeResponse(message, site_.handle(std::move(request)));
}

}  // namespace parvela::service
