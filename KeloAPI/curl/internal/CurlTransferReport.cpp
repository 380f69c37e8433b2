#include <KeloAPI/curl/internal/CurlTransfer.hpp>
#include <KeloAPI/http/TrafficObserver.hpp>

namespace KeloAPI {

namespace {

using std::chrono::duration_cast;
using std::chrono::microseconds;

template <class Value>
Value infoOf(CURL* easy, CURLINFO info) {
    Value value = 0;
    curl_easy_getinfo(easy, info, &value);
    return value;
}

/// libcurl says 0 for a step that a transfer did not reach or need.
std::optional<microseconds> stepOf(CURL* easy, CURLINFO info) {
    const microseconds time(infoOf<curl_off_t>(easy, info));
    return time.count() > 0 ? std::optional(time) : std::nullopt;
}

const char* nameOfVersion(long version) {
    switch (version) {
    case CURL_HTTP_VERSION_1_0:
        return "http/1.0";
    case CURL_HTTP_VERSION_1_1:
        return "http/1.1";
    case CURL_HTTP_VERSION_2_0:
        return "h2";
    default:
        return "";
    }
}

} // namespace

HopReport CurlTransfer::report(const Outcome& outcome) const {
    HopReport report;
    report.url = *_request.url;
    report.method = _request.method;
    report.total = duration_cast<microseconds>(Clock::now() - _hop->armed);
    report.begin = Date::now() - report.total;
    report.waited = duration_cast<microseconds>(_hop->waited);
    report.reusedConnection = _hop->sent && infoOf<long>(_easy, CURLINFO_NUM_CONNECTS) == 0;
    if (!report.reusedConnection) {
        report.nameFound = stepOf(_easy, CURLINFO_NAMELOOKUP_TIME_T);
        report.connected = stepOf(_easy, CURLINFO_CONNECT_TIME_T);
        report.secured = stepOf(_easy, CURLINFO_APPCONNECT_TIME_T);
    }
    // Not libcurl's own: of a request with a body it tells when that begins to go out.
    if (_hop->firstByte) {
        report.firstByte = duration_cast<microseconds>(*_hop->firstByte - _hop->armed);
    }
    report.protocol = nameOfVersion(infoOf<long>(_easy, CURLINFO_HTTP_VERSION));
    report.bytesSent = infoOf<long>(_easy, CURLINFO_REQUEST_SIZE) +
                       infoOf<curl_off_t>(_easy, CURLINFO_SIZE_UPLOAD_T);
    report.bytesReceived = infoOf<long>(_easy, CURLINFO_HEADER_SIZE) +
                           infoOf<curl_off_t>(_easy, CURLINFO_SIZE_DOWNLOAD_T);
    report.statusCode = _hop->head.statusCode();
    report.error = outcome.error;
    if (isCancelled()) {
        report.error = httpError(HTTPErrorCode::Cancelled, "the request was cancelled");
    }
    return report;
}

} // namespace KeloAPI
