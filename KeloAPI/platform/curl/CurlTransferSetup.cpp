#include <KeloAPI/platform/curl/CurlTransfer.hpp>

#include <algorithm>
#include <array>
#include <cstddef>

namespace KeloAPI {

namespace {

/// The framing of the message is the transport's own business.
bool isFramingField(std::string_view name) {
    constexpr std::array<std::string_view, 2> framing = {"Content-Length", "Transfer-Encoding"};
    const HeaderNameLess less;
    for (const std::string_view field : framing) {
        if (!less(name, field) && !less(field, name)) {
            return true;
        }
    }
    return false;
}

/// How much of a body libcurl takes at a time: more than its usual 64 KiB makes a large body
/// quicker, and less than a sixteenth of the body leaves the progress its steps.
long uploadBufferFor(std::size_t bodySize) {
    constexpr std::size_t usual = std::size_t{64} << 10U;
    constexpr std::size_t most = std::size_t{512} << 10U;
    return static_cast<long>(std::clamp(bodySize / 16, usual, most));
}

bool promisesBody(Method method) {
    return method == Method::POST || method == Method::PUT || method == Method::PATCH;
}

} // namespace

void CurlTransfer::setUp(const TrustStore& trust, CURLSH* cookies) {
    curl_easy_setopt(_easy, CURLOPT_PRIVATE, this);
    curl_easy_setopt(_easy, CURLOPT_ERRORBUFFER, _detail.data());
    curl_easy_setopt(_easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(_easy, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(_easy, CURLOPT_HTTP09_ALLOWED, 0L);
    // Unpacked here: libcurl takes a body whose packing was cut short for a whole one.
    curl_easy_setopt(_easy, CURLOPT_ACCEPT_ENCODING, "gzip");
    curl_easy_setopt(_easy, CURLOPT_HTTP_CONTENT_DECODING, 0L);
    curl_easy_setopt(_easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    // Without it a cancellation waits for a name lookup that may take seconds.
    curl_easy_setopt(_easy, CURLOPT_QUICK_EXIT, 1L);
    // Time without a byte is counted here, connecting included. libcurl's own limit lies beyond,
    // but follows it: an address that does not answer gets half of it before the next is tried.
    const auto beyond = _timeoutInterval + std::chrono::seconds(10);
    curl_easy_setopt(_easy, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(beyond.count()));

    curl_easy_setopt(_easy, CURLOPT_HEADERFUNCTION, &CurlTransfer::onHeader);
    curl_easy_setopt(_easy, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(_easy, CURLOPT_WRITEFUNCTION, &CurlTransfer::onBody);
    curl_easy_setopt(_easy, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(_easy, CURLOPT_XFERINFOFUNCTION, &CurlTransfer::onProgress);
    curl_easy_setopt(_easy, CURLOPT_XFERINFODATA, this);
    curl_easy_setopt(_easy, CURLOPT_NOPROGRESS, 0L);

    trust.applyTo(_easy);
    // A Cookie field that the request brings is all that is sent.
    if (!_exchange->request().headerFields.contains("Cookie")) {
        curl_easy_setopt(_easy, CURLOPT_SHARE, cookies);
        curl_easy_setopt(_easy, CURLOPT_COOKIEFILE, ""); // no file: switches cookies on
    }
    setUpRequest();
    setUpHeaders();
}

void CurlTransfer::setUpRequest() {
    const URLRequest& request = _exchange->request();
    curl_easy_setopt(_easy, CURLOPT_URL, request.url->absoluteString().c_str());
    curl_easy_setopt(_easy, CURLOPT_PATH_AS_IS, 1L);
    // HTTP/2 comes with TLS only; without it there is nothing to wait for.
    const bool secure = request.url->scheme() == "https";
    const long version = secure ? CURL_HTTP_VERSION_2TLS : CURL_HTTP_VERSION_1_1;
    curl_easy_setopt(_easy, CURLOPT_HTTP_VERSION, version);
    curl_easy_setopt(_easy, CURLOPT_PIPEWAIT, secure ? 1L : 0L);

    if (request.method == Method::HEAD) {
        curl_easy_setopt(_easy, CURLOPT_NOBODY, 1L);
        return;
    }
    if (request.body || promisesBody(request.method)) {
        _body = request.body ? request.body->text() : std::string_view();
        curl_easy_setopt(_easy, CURLOPT_UPLOAD, 1L);
        curl_easy_setopt(_easy, CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(_body.size()));
        curl_easy_setopt(_easy, CURLOPT_READFUNCTION, &CurlTransfer::onRead);
        curl_easy_setopt(_easy, CURLOPT_READDATA, this);
        curl_easy_setopt(_easy, CURLOPT_UPLOAD_BUFFERSIZE, uploadBufferFor(_body.size()));
        curl_easy_setopt(_easy, CURLOPT_SEEKFUNCTION, &CurlTransfer::onSeek);
        curl_easy_setopt(_easy, CURLOPT_SEEKDATA, this);
    }
    curl_easy_setopt(_easy, CURLOPT_CUSTOMREQUEST, std::string(name(request.method)).c_str());
}

void CurlTransfer::setUpHeaders() {
    const HeaderFields& fields = _exchange->request().headerFields;
    for (const auto& [name, value] : fields) {
        if (isFramingField(name)) {
            continue;
        }
        // libcurl takes "Name:" for the wish to leave a field out.
        const bool blank = value.find_first_not_of(" \t") == std::string::npos;
        std::string line = name;
        line += blank ? ";" : ": " + value;
        appendHeader(line);
    }
    // What libcurl would add by itself although HTTP does not need it.
    for (const char* unasked : {"Accept", "Expect"}) {
        if (!fields.contains(unasked)) {
            appendHeader(std::string(unasked) + ":");
        }
    }
    curl_easy_setopt(_easy, CURLOPT_HTTPHEADER, _headers);
}

void CurlTransfer::appendHeader(const std::string& line) {
    if (curl_slist* longer = curl_slist_append(_headers, line.c_str())) {
        _headers = longer;
    }
}

} // namespace KeloAPI
