#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/ServerConfig.h>
#include <ParvelaKit/Text.h>
#include <Platform/MainLoop.h>
#include <Platform/SoupTransport.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <libsoup/soup.h>

namespace parvela {

namespace {

using Answer = Result<HttpResponse, TransportError>;

constexpr gsize readSize = 256 * 1024;
constexpr int mostInformational = 16;

using UriPtr = GLibPtr<GUri, g_uri_unref>;

/// RFC 9110, section 5.6.2.
bool isHttpToken(std::string_view text) {
    constexpr std::string_view symbols = "!#$%&'*+-.^_`|~";
    return !text.empty() && std::ranges::all_of(text, [&](char c) {
        return g_ascii_isalnum(c) || symbols.find(c) != std::string_view::npos;
    });
}

bool isHeaderValue(std::string_view text) {
    return std::ranges::all_of(
        text, [](char c) { return (static_cast<unsigned char>(c) >= 0x20 && c != 0x7F) || c == '\t'; });
}

Ref<SoupMessage> newMessage(const HttpRequest& request) {
    const std::string scheme = request.url.lowercaseScheme();
    if ((scheme != "http" && scheme != "https") || request.url.lowercaseHost().empty()) return nullptr;
    if (!isHttpToken(request.method)) return nullptr;
    const UriPtr uri(g_uri_parse(request.url.text().c_str(), static_cast<GUriFlags>(SOUP_HTTP_URI_FLAGS), nullptr));
    if (!uri) return nullptr;

    auto message = Ref<SoupMessage>::adopt(soup_message_new_from_uri(request.method.c_str(), uri.get()));
    if (!message) return nullptr;
    soup_message_add_flags(message.get(),
                           static_cast<SoupMessageFlags>(SOUP_MESSAGE_NO_REDIRECT | SOUP_MESSAGE_COLLECT_METRICS));
    SoupMessageHeaders* const headers = soup_message_get_request_headers(message.get());
    soup_message_headers_replace(headers, "Accept-Encoding", "gzip");
    for (const HttpHeader& header : request.headers) {
        if (!isHttpToken(header.name) || !isHeaderValue(header.value)) return nullptr;
        soup_message_headers_replace(headers, header.name.c_str(), header.value.c_str());
    }
    if (request.body) {
        const BytesPtr bytes(g_bytes_new(request.body->data(), request.body->size()));
        const CharPtr type(g_strdup(soup_message_headers_get_one(headers, "Content-Type")));
        soup_message_set_request_body_from_bytes(message.get(), type.get(), bytes.get());
    }
    return message;
}

/// The content of a gzip body; none when it is no gzip, not whole, or has more than `limit` bytes.
std::optional<std::string> gunzipped(std::string_view zipped, std::size_t limit) {
    const auto decompressor = Ref<GZlibDecompressor>::adopt(g_zlib_decompressor_new(G_ZLIB_COMPRESSOR_FORMAT_GZIP));
    std::string plain;
    for (;;) {
        const std::size_t filled = plain.size();
        plain.resize(std::min(limit + 1, filled + std::max(2 * filled, readSize)));
        gsize used = 0;
        gsize made = 0;
        const GConverterResult result =
            g_converter_convert(decompressor.as<GConverter>(), zipped.data(), zipped.size(), plain.data() + filled,
                                plain.size() - filled, G_CONVERTER_INPUT_AT_END, &used, &made, nullptr);
        plain.resize(filled + made);
        if (result == G_CONVERTER_ERROR || plain.size() > limit) return std::nullopt;
        if (result == G_CONVERTER_FINISHED) return plain;
        zipped.remove_prefix(used);
    }
}

/// Whether a chunked body ended without its last chunk.
///
/// libsoup 3.2 takes the end of the connection for the end of a chunked body. Its body stream knows better: once
/// the last chunk was read it answers reads without touching the connection, and before that a read with a cancelled
/// token fails.
bool isCutShort(GInputStream* stream) {
    GInputStream* body = stream;
    while (body && g_strcmp0(G_OBJECT_TYPE_NAME(body), "SoupBodyInputStream") != 0) {
        if (!G_IS_FILTER_INPUT_STREAM(body)) return false;
        body = g_filter_input_stream_get_base_stream(G_FILTER_INPUT_STREAM(body));
    }
    if (!body || g_input_stream_is_closed(body) || g_input_stream_has_pending(body)) return false;
    const auto cancelled = Ref<GCancellable>::adopt(g_cancellable_new());
    g_cancellable_cancel(cancelled.get());
    std::array<char, 128> buffer{};  // libsoup reads trailer lines into it
    return g_input_stream_read(body, buffer.data(), buffer.size(), cancelled.get(), nullptr) < 0;
}

/// One request on its way. Callbacks of libsoup hold it until the last of them has come.
class Transfer : public std::enable_shared_from_this<Transfer> {
public:
    Transfer(Ref<SoupSession> session, Ref<SoupMessage> message, SoupTransport::Limits limits)
        : session_(std::move(session)), message_(std::move(message)), limits_(limits) {}

    Deferred<Answer> outcome() const { return outcome_; }

    void start() {
        const std::weak_ptr<Transfer> weak = weak_from_this();
        const auto timeOut = [weak] {
            if (const auto transfer = weak.lock()) transfer->finish(Failure(TransportError::timedOut));
        };
        whole_ = MainLoopTimer(limits_.whole, timeOut);
        signals_[0] = connect<void(SoupMessage*, GSocketClientEvent, GIOStream*)>(
            message_.get(), "network-event", [this](SoupMessage*, GSocketClientEvent, GIOStream*) { touch(); });
        signals_[1] = connect<void(SoupMessage*, guint)>(message_.get(), "wrote-body-data",
                                                         [this](SoupMessage*, guint) { touch(); });
        signals_[2] = connect<void(SoupMessage*)>(message_.get(), "got-informational",
                                                  [this](SoupMessage*) { countInformational(); });

        touch();
        soup_session_send_async(
            session_.get(), message_.get(), G_PRIORITY_DEFAULT, cancellable_.get(),
            [](GObject*, GAsyncResult* result, gpointer data) { claim(data)->answered(result); }, hold());
    }

    /// Ends the transfer. Nothing of this object may be touched after it by the caller: whoever awaits runs on from
    /// here.
    void finish(Answer answer) {
        const auto self = shared_from_this();
        whole_.reset();
        idle_.reset();
        for (Connection& signal : signals_) signal.disconnect();
        if (!answer) g_cancellable_cancel(cancellable_.get());
        outcome_.resolve(std::move(answer));
    }

private:
    using Self = std::shared_ptr<Transfer>;

    gpointer hold() { return new Self(shared_from_this()); }
    static Self claim(gpointer data) {
        const std::unique_ptr<Self> held(static_cast<Self*>(data));
        return *held;
    }

    void touch() {
        if (outcome_.resolved()) return;
        idle_ = MainLoopTimer(limits_.idle, [weak = weak_from_this()] {
            if (const auto transfer = weak.lock()) transfer->finish(Failure(TransportError::timedOut));
        });
    }

    /// libsoup reads them all in one turn of the main loop, so no timer would end it.
    void countInformational() {
        if (++informational_ > mostInformational) g_cancellable_cancel(cancellable_.get());
    }

    SoupMessageHeaders* answerHeaders() const { return soup_message_get_response_headers(message_.get()); }

    bool isChunked() const { return soup_message_headers_get_encoding(answerHeaders()) == SOUP_ENCODING_CHUNKED; }

    void answered(GAsyncResult* result) {
        ErrorPtr error;
        stream_ = Ref<GInputStream>::adopt(soup_session_send_finish(session_.get(), result, error.out()));
        if (outcome_.resolved()) return;
        if (!stream_) return finish(Failure(reason(*error.get())));
        touch();
        if (soup_message_headers_get_encoding(answerHeaders()) == SOUP_ENCODING_CONTENT_LENGTH) {
            const auto length = static_cast<std::uint64_t>(soup_message_headers_get_content_length(answerHeaders()));
            if (length > limits_.body) return finish(Failure(TransportError::invalidResponse));
            body_.reserve(static_cast<std::size_t>(length));
        }
        readMore();
    }

    void readMore() {
        g_input_stream_read_bytes_async(
            stream_.get(), readSize, G_PRIORITY_DEFAULT, cancellable_.get(),
            [](GObject*, GAsyncResult* result, gpointer data) { claim(data)->gotBytes(result); }, hold());
    }

    void gotBytes(GAsyncResult* result) {
        ErrorPtr error;
        const BytesPtr bytes(g_input_stream_read_bytes_finish(stream_.get(), result, error.out()));
        if (outcome_.resolved()) return;
        if (!bytes) return finish(Failure(reason(*error.get())));
        gsize size = 0;
        const void* const data = g_bytes_get_data(bytes.get(), &size);
        if (size == 0) return complete();
        if (size > limits_.body - body_.size()) return finish(Failure(TransportError::invalidResponse));
        body_.append(static_cast<const char*>(data), size);
        touch();
        readMore();
    }

    void complete() {
        if (isChunked() && isCutShort(stream_.get())) return finish(Failure(TransportError::invalidResponse));
        // The connection becomes free for the next request.
        g_input_stream_close(stream_.get(), nullptr, nullptr);
        if (const char* const coding = soup_message_headers_get_list(answerHeaders(), "Content-Encoding");
            coding && !body_.empty() && !equalsIgnoringAsciiCase(coding, "identity")) {
            auto plain = equalsIgnoringAsciiCase(coding, "gzip") ? gunzipped(body_, limits_.body) : std::nullopt;
            if (!plain) return finish(Failure(TransportError::invalidResponse));
            body_ = std::move(*plain);
        }
        HttpResponse response{.status = static_cast<int>(soup_message_get_status(message_.get())),
                              .body = std::move(body_)};
        soup_message_headers_foreach(
            answerHeaders(),
            [](const char* name, const char* value, gpointer target) {
                static_cast<HttpResponse*>(target)->headers.push_back({toUtf8(toUtf16(name)), toUtf8(toUtf16(value))});
            },
            &response);
        finish(std::move(response));
    }

    TransportError reason(const GError& error) const {
        if (g_error_matches(&error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT)) return TransportError::timedOut;
        // libsoup's own errors are about what the server said; others are lost connections.
        if (error.domain == SOUP_SESSION_ERROR) return TransportError::invalidResponse;
        const bool hasBegun =
            soup_message_metrics_get_response_header_bytes_received(soup_message_get_metrics(message_.get())) > 0;
        if (!hasBegun) return TransportError::unreachable;
        // What may have changed something must not look as if it had not been sent.
        const bool changesNothing = g_str_equal(soup_message_get_method(message_.get()), SOUP_METHOD_GET);
        const bool isSound = soup_message_get_status(message_.get()) != SOUP_STATUS_NONE && !isChunked();
        return changesNothing && isSound ? TransportError::unreachable : TransportError::invalidResponse;
    }

    Ref<SoupSession> session_;
    Ref<SoupMessage> message_;
    SoupTransport::Limits limits_;
    Ref<GCancellable> cancellable_ = Ref<GCancellable>::adopt(g_cancellable_new());
    Ref<GInputStream> stream_;
    std::string body_;
    int informational_ = 0;
    std::array<Connection, 3> signals_;
    MainLoopTimer whole_, idle_;
    Deferred<Answer> outcome_;
};

}  // namespace

class SoupTransport::Session {
public:
    explicit Session(Limits limits) : limits_(limits) {}

    Task<Answer> send(HttpRequest request, std::stop_token stop) {
        if (stop.stop_requested()) co_return Failure(TransportError::cancelled);
        auto message = newMessage(request);
        if (!message) co_return Failure(TransportError::badURL);

        Limits limits = limits_;
        limits.whole = std::min<std::chrono::milliseconds>(limits.whole, request.timeout);
        const auto transfer = std::make_shared<Transfer>(sessionFor(request.url), std::move(message), limits);
        const StopWatch watch(std::move(stop), [transfer] { transfer->finish(Failure(TransportError::cancelled)); });
        transfer->start();
        const auto outcome = transfer->outcome();
        auto answer = co_await outcome;
        co_return answer;
    }

private:
    Ref<SoupSession> sessionFor(const Url& url) {
        const bool isDirect = ServerConfig::isLoopback(url);
        Ref<SoupSession>& session = isDirect ? direct_ : session_;
        if (!session) {
            // Time-outs are ours: libsoup's counts silence of one connection only.
            session = Ref<SoupSession>::adopt(soup_session_new_with_options("timeout", 0U, nullptr));
            soup_session_remove_feature_by_type(session.get(), SOUP_TYPE_AUTH_MANAGER);
            // libsoup's decoder takes the half of a compressed body for the whole.
            soup_session_remove_feature_by_type(session.get(), SOUP_TYPE_CONTENT_DECODER);
            // What stays on this machine goes through no proxy, and none sees its token.
            if (isDirect) soup_session_set_proxy_resolver(session.get(), nullptr);
        }
        return session;
    }

    Limits limits_;
    Ref<SoupSession> session_;
    Ref<SoupSession> direct_;  ///< for this machine, past any proxy
};

SoupTransport::SoupTransport(Limits limits) : session_(std::make_shared<Session>(limits)) {
}

Task<Answer> SoupTransport::operator()(HttpRequest request, std::stop_token stop) const {
    return session_->send(std::move(request), std::move(stop));
}

Transport SoupTransport::shared() {
    static const SoupTransport transport;
    return transport;
}

}  // namespace parvela
