#include <KeloAPI/base/internal/System.hpp>
#include <KeloAPI/curl/internal/CurlErrors.hpp>
#include <KeloAPI/http/HTTPError.hpp>

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace KeloAPI {

namespace {

/// libcurl has one code for a handshake that broke off and for one that came to no agreement; its
/// text tells them apart.
bool brokeOff(std::string_view handshake) {
    return handshake.starts_with("Recv failure") || handshake.starts_with("Send failure") ||
           handshake.starts_with("OpenSSL SSL_connect:") ||
           handshake.find("unexpected eof while reading") != std::string_view::npos;
}

/// Chunks or trailers that cannot be read have the code of a connection that cannot be.
bool isOfChunks(std::string_view detail) {
    return detail.ends_with("in chunked-encoding");
}

/// Over HTTP/2 a head that is too long for libcurl has the same code.
bool isOfHead(std::string_view detail) {
    return detail.ends_with("returned -902:The user callback function failed") ||
           detail.find("Too many CONTINUATION frames") != std::string_view::npos;
}

/// Whether the process has fewer descriptors left than a lookup or a store of certificates takes
/// for itself: then it is these that failed, not the name or the store.
bool lacksDescriptors() {
    constexpr int needed = 4; // libcurl's lookup holds two beside its own files and sockets
    std::array<int, needed> made{};
    std::generate(made.begin(), made.end(),
                  [] { return System::openSocket(AF_UNIX, SOCK_DGRAM, 0); });
    const bool lacks = made.back() < 0 && (errno == EMFILE || errno == ENFILE);
    for (const int descriptor : made) {
        if (descriptor >= 0) {
            ::close(descriptor);
        }
    }
    return lacks;
}

bool foundNoThread(std::string_view lookup) {
    return lookup.find("thread failed to start") != std::string_view::npos;
}

HTTPErrorCode httpCode(CURLcode code, std::string_view detail) {
    switch (code) {
    case CURLE_URL_MALFORMAT:
    // Of all that callers choose, only a URL can be longer than an option's value may be.
    case CURLE_BAD_FUNCTION_ARGUMENT:
        return HTTPErrorCode::UnsupportedURL;
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
        return foundNoThread(detail) || lacksDescriptors() ? HTTPErrorCode::OutOfResources
                                                           : HTTPErrorCode::CannotFindHost;
    case CURLE_COULDNT_CONNECT:
    case CURLE_PROXY:
    case CURLE_INTERFACE_FAILED:
    case CURLE_NO_CONNECTION_AVAILABLE:
        return HTTPErrorCode::CannotConnect;
    case CURLE_OPERATION_TIMEDOUT:
        return HTTPErrorCode::TimedOut;
    case CURLE_GOT_NOTHING:
    case CURLE_PARTIAL_FILE:
    case CURLE_SEND_ERROR:
    case CURLE_SEND_FAIL_REWIND:
    case CURLE_UPLOAD_FAILED:
    case CURLE_HTTP2_STREAM:
    case CURLE_HTTP2:
        return HTTPErrorCode::ConnectionLost;
    case CURLE_RECV_ERROR:
        return isOfChunks(detail) || isOfHead(detail) ? HTTPErrorCode::BadServerResponse
                                                      : HTTPErrorCode::ConnectionLost;
    case CURLE_SSL_CONNECT_ERROR:
        return brokeOff(detail) ? HTTPErrorCode::ConnectionLost : HTTPErrorCode::ServerTrust;
    case CURLE_SSL_CACERT_BADFILE:
        return lacksDescriptors() ? HTTPErrorCode::OutOfResources : HTTPErrorCode::ServerTrust;
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_INVALIDCERTSTATUS:
    case CURLE_SSL_CLIENTCERT:
    case CURLE_SSL_ENGINE_NOTFOUND:
    case CURLE_SSL_ENGINE_SETFAILED:
    case CURLE_SSL_ENGINE_INITFAILED:
        return HTTPErrorCode::ServerTrust;
    // Every URL is checked to be one of http or https before: this means a response in no version
    // of HTTP that is spoken.
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_BAD_CONTENT_ENCODING:
        return HTTPErrorCode::BadServerResponse;
    case CURLE_OUT_OF_MEMORY:
        return HTTPErrorCode::OutOfResources;
    default:
        return HTTPErrorCode::Unknown;
    }
}

std::string_view message(HTTPErrorCode code) {
    switch (code) {
    case HTTPErrorCode::UnsupportedURL:
        return "unsupported URL";
    case HTTPErrorCode::CannotFindHost:
        return "the host's name has no address";
    case HTTPErrorCode::CannotConnect:
        return "cannot connect to the host";
    case HTTPErrorCode::TimedOut:
        return "the request timed out";
    case HTTPErrorCode::ConnectionLost:
        return "the connection was lost";
    case HTTPErrorCode::ServerTrust:
        return "no secure connection that the host's policy accepts; check the pinned certificates";
    case HTTPErrorCode::BadServerResponse:
        return "the server's response is not HTTP";
    case HTTPErrorCode::OutOfResources:
        return "there is no memory, thread or descriptor for the request";
    default:
        return "the request failed";
    }
}

} // namespace

Error curlError(CURLcode code, std::string_view detail) {
    std::string text(detail.empty() ? std::string_view(curl_easy_strerror(code)) : detail);
    const HTTPErrorCode ours = httpCode(code, detail);
    return httpError(ours, std::string(message(ours)),
                     Error::withMessage(CurlErrorDomain, code, std::move(text)));
}

} // namespace KeloAPI
