#include <KeloAPI/base/internal/Ascii.hpp>
#include <KeloAPI/curl/internal/CurlOptions.hpp>
#include <KeloAPI/curl/internal/CurlTransfer.hpp>

#include <algorithm>
#include <cstddef>

namespace KeloAPI {

namespace {

/// The framing of the message is the transport's own business.
bool isFramingField(std::string_view name) {
    return Ascii::equalsIgnoringCase(name, "Content-Length") ||
           Ascii::equalsIgnoringCase(name, "Transfer-Encoding");
}

/// How much of a body libcurl takes at a time: more than its usual 64 KiB makes a large body
/// quicker, and less than a sixteenth of the body leaves the progress its steps.
long uploadBufferFor(std::size_t bodySize) {
    constexpr std::size_t defaultSize = std::size_t{64} << 10U;
    constexpr std::size_t maxSize = std::size_t{512} << 10U;
    return static_cast<long>(std::clamp(bodySize / 16, defaultSize, maxSize));
}

bool promisesBody(Method method) {
    return method == Method::POST || method == Method::PUT || method == Method::PATCH;
}

} // namespace

void CurlTransfer::setUpTransfer(CurlOptions& options) {
    options.set(CURLOPT_PRIVATE, this);
    options.set(CURLOPT_ERRORBUFFER, _hop->detail.data());
    options.set(CURLOPT_NOSIGNAL, 1L);
    options.set(CURLOPT_PROTOCOLS_STR, "http,https");
    options.set(CURLOPT_HTTP09_ALLOWED, 0L);
    // Unpacked here: libcurl takes a body whose packing was cut short for a whole one.
    options.set(CURLOPT_ACCEPT_ENCODING, "gzip");
    options.set(CURLOPT_HTTP_CONTENT_DECODING, 0L);
    options.set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    // Without it a cancellation waits for a name lookup that may take seconds.
    options.set(CURLOPT_QUICK_EXIT, 1L);
    // Time without a byte is counted here, connecting included. libcurl's own limit lies beyond,
    // but follows it: an address that does not answer gets half of it before the next is tried.
    const auto beyond = _timeoutInterval + std::chrono::seconds(10);
    const auto connecting = _settings.connectTimeout.value_or(beyond);
    options.set(CURLOPT_CONNECTTIMEOUT_MS,
                static_cast<long>(std::clamp<std::int64_t>(connecting.count(), 1, beyond.count())));
    if (_settings.proxy) {
        options.set(CURLOPT_PROXY, _settings.proxy->c_str());
        options.set(CURLOPT_NOPROXY, "");
    }

    options.set(CURLOPT_HEADERFUNCTION, &CurlTransfer::onHeader);
    options.set(CURLOPT_HEADERDATA, this);
    options.set(CURLOPT_OPENSOCKETFUNCTION, &CurlTransfer::onOpenSocket);
    options.set(CURLOPT_OPENSOCKETDATA, this);
    options.set(CURLOPT_WRITEFUNCTION, &CurlTransfer::onBody);
    options.set(CURLOPT_WRITEDATA, this);
    options.set(CURLOPT_XFERINFOFUNCTION, &CurlTransfer::onProgress);
    options.set(CURLOPT_XFERINFODATA, this);
    options.set(CURLOPT_NOPROGRESS, 0L);
    options.set(CURLOPT_PREREQFUNCTION, &CurlTransfer::onConnected);
    options.set(CURLOPT_PREREQDATA, this);
    _shared->sockets.watch(options);
}

void CurlTransfer::setUpCookies(CurlOptions& options) {
    // A Cookie field that the request brings is all that is sent.
    if (!_request.headerFields.contains("Cookie")) {
        options.set(CURLOPT_SHARE, _shared->cookies);
        options.set(CURLOPT_COOKIEFILE, ""); // no file: switches cookies on
    }
}

void CurlTransfer::setUpRequest(CurlOptions& options) {
    const URLRequest& request = _request;
    options.set(CURLOPT_URL, request.url->absoluteString().c_str());
    options.set(CURLOPT_PATH_AS_IS, 1L);
    const bool secure = request.url->scheme() == "https"; // HTTP/2 comes with TLS only
    const long version = secure ? CURL_HTTP_VERSION_2TLS : CURL_HTTP_VERSION_1_1;
    options.set(CURLOPT_HTTP_VERSION, version);

    if (request.method == Method::HEAD) {
        options.set(CURLOPT_NOBODY, 1L);
        return;
    }
    if (request.body || promisesBody(request.method)) {
        _body = request.body ? request.body->text() : std::string_view();
        options.set(CURLOPT_UPLOAD, 1L);
        options.set(CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(_body.size()));
        options.set(CURLOPT_READFUNCTION, &CurlTransfer::onRead);
        options.set(CURLOPT_READDATA, this);
        options.set(CURLOPT_UPLOAD_BUFFERSIZE, uploadBufferFor(_body.size()));
        options.set(CURLOPT_SEEKFUNCTION, &CurlTransfer::onSeek);
        options.set(CURLOPT_SEEKDATA, this);
    }
    options.set(CURLOPT_CUSTOMREQUEST, std::string(name(request.method)).c_str());
}

void CurlTransfer::setUpHeaders(CurlOptions& options) {
    const HeaderFields& fields = _request.headerFields;
    for (const auto& [name, value] : fields) {
        if (isFramingField(name)) {
            continue;
        }
        // libcurl takes "Name:" for the wish to leave a field out.
        const bool blank = value.find_first_not_of(" \t") == std::string::npos;
        std::string line = name;
        line += blank ? ";" : ": " + value;
        appendHeader(options, line);
    }
    // What libcurl would add by itself although HTTP does not need it.
    for (const char* unasked : {"Accept", "Expect"}) {
        if (!fields.contains(unasked)) {
            appendHeader(options, std::string(unasked) + ":");
        }
    }
    options.set(CURLOPT_HTTPHEADER, _headers);
}

void CurlTransfer::appendHeader(CurlOptions& options, const std::string& line) {
    if (curl_slist* longer = curl_slist_append(_headers, line.c_str())) {
        _headers = longer;
    } else {
        options.fail(CURLE_OUT_OF_MEMORY);
    }
}

} // namespace KeloAPI
