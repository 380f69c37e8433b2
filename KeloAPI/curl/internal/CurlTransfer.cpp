#include <KeloAPI/base/internal/System.hpp>
#include <KeloAPI/curl/internal/CurlErrors.hpp>
#include <KeloAPI/curl/internal/CurlOptions.hpp>
#include <KeloAPI/curl/internal/CurlSockets.hpp>
#include <KeloAPI/curl/internal/CurlTransfer.hpp>
#include <KeloAPI/curl/internal/NetworkThread.hpp>
#include <KeloAPI/curl/internal/Redirect.hpp>
#include <KeloAPI/curl/internal/Retry.hpp>
#include <KeloAPI/curl/internal/StrayData.hpp>
#include <KeloAPI/http/TrafficObserver.hpp>
#include <KeloAPI/queues/internal/ExitGuard.hpp>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>

namespace KeloAPI {

namespace {

/// More of a redirect's body than this is not worth reading for the sake of its connection.
constexpr std::size_t maxDiscarded = 64UL * 1024;

constexpr const char* headTooLong = "the response's head is too long";

/// No interval beyond this makes a difference, and none overflows the clock.
constexpr std::chrono::milliseconds maxInterval = std::chrono::hours(24 * 365);

bool speaksHTTP2(const SSL* tls) {
    const unsigned char* protocol = nullptr;
    unsigned int length = 0;
    if (tls != nullptr) {
        SSL_get0_alpn_selected(tls, &protocol, &length);
    }
    return std::string_view(reinterpret_cast<const char*>(protocol), length) == "h2";
}

std::uint64_t nextOrder() {
    static std::atomic<std::uint64_t> next;
    return next++;
}

bool changesNothing(Method method) {
    return method == Method::GET || method == Method::HEAD;
}

} // namespace

CurlTransfer::CurlTransfer(const URLRequest& request, std::shared_ptr<ExchangeObserver> observer,
                           std::shared_ptr<NetworkThread> thread)
    : _order(nextOrder())
    , _request(request)
    , _observer(std::move(observer))
    , _thread(std::move(thread))
    , _settings(_thread->settings())
    , _timeoutInterval(std::min({request.timeoutInterval, maxInterval,
                                 _settings.silenceTimeout.value_or(maxInterval)})) {}

void CurlTransfer::cancel() {
    _cancelled = true;
    _thread->cancel(shared_from_this());
}

void CurlTransfer::wait(CurlOrigin& origin) {
    _origin = &origin;
    _hop.emplace(_settings.maxHeadBytes);
    stage = Stage::Waiting;
}

CurlTransfer::Clock::time_point CurlTransfer::deadline() const {
    const auto moved =
        _hop->sent ? _hop->lastActivity : std::max(_hop->lastActivity, _origin->lastMoved);
    return std::min(moved + _timeoutInterval, _end);
}

bool CurlTransfer::arm(Shared& shared) {
    _shared = &shared;
    const auto waitingSince = std::exchange(_hop->lastActivity, Clock::now());
    if (_settings.observer) {
        _hop->armed = _hop->lastActivity;
        _hop->waited = _hop->armed - waitingSince;
    }
    if (_settings.responseTimeout && _end == Clock::time_point::max()) {
        _end = _hop->lastActivity + std::min(*_settings.responseTimeout, maxInterval);
    }
    _body = {};
    disarm();
    _namesHost = _request.headerFields.contains("Host");
    _easy = shared.easyHandles.take();
    CurlOptions options(_easy);
    if (_easy == nullptr) {
        options.fail(CURLE_OUT_OF_MEMORY);
    }
    setUpTransfer(options);
    _origin->trust->applyTo(options);
    setUpCookies(options);
    setUpRequest(options);
    setUpHeaders(options);
    if (options.code() != CURLE_OK) {
        _hop->failure = curlError(options.code(), {});
    }
    return !_hop->failure;
}

void CurlTransfer::disarm() {
    if (_easy != nullptr) {
        _shared->easyHandles.giveBack(std::exchange(_easy, nullptr), !_namesHost);
    }
    curl_slist_free_all(std::exchange(_headers, nullptr));
}

CurlTransfer& CurlTransfer::of(CURL* easy) {
    char* self = nullptr;
    curl_easy_getinfo(easy, CURLINFO_PRIVATE, &self);
    return *reinterpret_cast<CurlTransfer*>(self);
}

/// The result of a callback's step; gives the transfer up, with `otherwise`, when memory runs out.
template <class Result, class Step>
Result CurlTransfer::inCallback(Result otherwise, Step step) {
    Result result = otherwise;
    try {
        result = step();
    } catch (const std::bad_alloc&) {
        giveUp(HTTPErrorCode::OutOfResources, "there is no memory for the exchange");
    }
    ExitGuard::parkIfExiting();
    return result;
}

void CurlTransfer::distrustConnection() {
    if (_easy != nullptr) {
        curl_easy_setopt(_easy, CURLOPT_FORBID_REUSE, 1L);
    }
}

CurlTransfer::Outcome CurlTransfer::outcome(CURLcode code) const {
    Outcome outcome;
    if (_hop->isPassedOver) {
        // Whatever became of its body, the head has said what is to be done.
        outcome.redirects = _hop->redirects;
        outcome.pause = _hop->pause;
    } else if (_hop->failure) {
        outcome.error = _hop->failure;
    } else if (code == CURLE_OUT_OF_MEMORY && _hop->sent && !_hop->head.isFinished()) {
        // So libcurl says of a single line that is too long.
        outcome.error = httpError(HTTPErrorCode::BadServerResponse, headTooLong);
    } else if (code != CURLE_OK) {
        outcome.error = curlError(code, _hop->detail.data());
        if (code == CURLE_COULDNT_CONNECT && _hop->lacksDescriptors) {
            outcome.error = httpError(HTTPErrorCode::OutOfResources,
                                      "no descriptor for a connection", std::move(outcome.error));
        }
        // So libcurl says, without further words, of a stream beyond the last one that the server
        // named when it went away; but also of one that was under way when the server broke the
        // protocol. Only what changes nothing can be sent again without knowing which it was.
        outcome.sendAgain = code == CURLE_HTTP2 && _hop->detail.front() == '\0' &&
                            _hop->head.statusCode() == 0 && changesNothing(_request.method);
    } else if (!_hop->head.isFinished()) {
        outcome.error =
            httpError(HTTPErrorCode::ConnectionLost, "the response ended within its head");
    } else if (_hop->farewell && !_hop->farewell->wasHeard()) {
        outcome.error =
            httpError(HTTPErrorCode::ConnectionLost, "the connection ended before TLS did");
    } else if (_hop->gzip && !_hop->gzip->isComplete()) {
        outcome.error =
            httpError(HTTPErrorCode::BadServerResponse, "the response's body was cut short");
    }
    outcome.isPassing = outcome.isPassing || (outcome.error && mayPass(*outcome.error));
    return outcome;
}

CurlTransfer::Outcome CurlTransfer::overdue() const {
    if (_hop->isPassedOver) {
        return outcome(CURLE_OK);
    }
    Outcome outcome;
    outcome.error = httpError(HTTPErrorCode::TimedOut, "the request timed out");
    outcome.isPassing = stage == Stage::InFlight && mayPass(*outcome.error);
    return outcome;
}

/// True for a connection that was not made, or was lost before a response.
bool CurlTransfer::mayPass(const Error& error) const {
    if (isHTTPError(error, HTTPErrorCode::ConnectionLost)) {
        return !_hop->isToldOf;
    }
    return !_hop->sent && (isHTTPError(error, HTTPErrorCode::CannotFindHost) ||
                           isHTTPError(error, HTTPErrorCode::CannotConnect) ||
                           isHTTPError(error, HTTPErrorCode::TimedOut));
}

CurlTransfer::Next CurlTransfer::goOn(Outcome outcome) {
    if (_settings.observer && stage == Stage::InFlight) {
        _observer->didFinishHop(report(outcome));
    }
    if (outcome.redirects) {
        return follow();
    }
    // Two servers in a row may go away; a third one that does is not well.
    constexpr int maxResends = 2;
    if (outcome.sendAgain && ++_resends <= maxResends) {
        return Next::Request;
    }
    if (outcome.isPassing && !outcome.pause && mayRetry()) {
        outcome.pause = nextPause();
    }
    if (outcome.pause && !isCancelled()) {
        ++_retries;
        stage = Stage::Pausing;
        listedDeadline = Clock::now() + *outcome.pause;
        return Next::Pause;
    }
    complete(std::move(outcome.error));
    return Next::Nothing;
}

/// Makes the request of the next hop, where there is one.
CurlTransfer::Next CurlTransfer::follow() {
    if (++_redirects > maxRedirects) {
        complete(httpError(HTTPErrorCode::TooManyRedirects, "too many redirects"));
        return Next::Nothing;
    }
    Result<URLRequest> next = redirected(_request, _hop->head.statusCode(), _hop->head.fields());
    if (!next) {
        complete(next.error());
        return Next::Nothing;
    }
    _request = std::move(next.value());
    return Next::Request;
}

bool CurlTransfer::mayRetry() const {
    return _retries < _settings.retries.maxRetries && isRepeatable(_request.method) &&
           !isCancelled();
}

std::optional<std::chrono::milliseconds> CurlTransfer::nextPause() const {
    const auto pause = retryPause(_settings.retries, _retries, _hop->head.fields(), _order);
    return pause && Clock::now() + *pause < _end ? pause : std::nullopt;
}

void CurlTransfer::complete(std::optional<Error> error) {
    if (isCancelled() && !(error && isHTTPError(*error, HTTPErrorCode::Cancelled))) {
        error = httpError(HTTPErrorCode::Cancelled, "the request was cancelled");
    }
    std::exchange(_observer, nullptr)->didComplete(std::move(error));
    disarm();
    _request = {};
}

bool CurlTransfer::giveUp(HTTPErrorCode code, const char* message) {
    if (code == HTTPErrorCode::BadServerResponse) {
        // Over HTTP/2 the server may go on with it for ever: the next request must not come behind.
        distrustConnection();
    }
    _hop->failure = httpError(code, message);
    return false;
}

bool CurlTransfer::takeHeaderLine(std::string_view line) {
    moved();
    if (_settings.observer && !_hop->firstByte) {
        _hop->firstByte = _hop->lastActivity;
    }
    switch (_hop->head.take(line)) {
    case ResponseHead::Progress::Unfinished:
        return true;
    case ResponseHead::Progress::TooLong:
        return giveUp(HTTPErrorCode::BadServerResponse, headTooLong);
    case ResponseHead::Progress::Finished:
        break;
    }
    if (_hop->head.statusCode() == 101) {
        return giveUp(HTTPErrorCode::BadServerResponse, "the server has left HTTP unasked");
    }
    if (!_hop->head.hasSoundFraming()) {
        return giveUp(HTTPErrorCode::BadServerResponse, "the response's length cannot be known");
    }
    if (isRedirect(_hop->head.statusCode(), _hop->head.fields())) {
        _hop->redirects = true;
        _hop->isPassedOver = true;
        return true;
    }
    if (isPassingStatus(_hop->head.statusCode()) && mayRetry()) {
        _hop->pause = nextPause();
    }
    if (_hop->pause) {
        _hop->isPassedOver = true;
        return true;
    }
    if (isCancelled()) {
        return false;
    }
    if (_request.method != Method::HEAD && _hop->head.endsWithConnection()) {
        listenForFarewell();
    }
    _hop->isToldOf = true;
    _hop->coding = _hop->head.contentCoding();
    const std::int64_t length = _hop->head.expectedContentLength();
    _observer->didReceiveResponse(
        {*_request.url, _hop->head.statusCode(), _hop->head.takeFields(), length});
    return true;
}

bool CurlTransfer::takeBody(std::string_view bytes) {
    moved();
    if (_hop->isPassedOver) {
        _hop->discarded += bytes.size();
        return _hop->discarded <= maxDiscarded;
    }
    if (isCancelled()) {
        return false;
    }
    switch (_hop->coding) {
    case ResponseHead::ContentCoding::None:
        return deliver(bytes);
    case ResponseHead::ContentCoding::Gzip:
        return unpack(bytes);
    case ResponseHead::ContentCoding::Other:
        break;
    }
    return giveUp(HTTPErrorCode::BadServerResponse, "the response's encoding was not offered");
}

bool CurlTransfer::unpack(std::string_view bytes) {
    if (!_hop->gzip) {
        _hop->gzip = std::make_unique<GzipDecoder>();
    }
    const auto result =
        _hop->gzip->take(bytes, [this](std::string_view unpacked) { return deliver(unpacked); });
    if (result == GzipDecoder::Result::Malformed) {
        return giveUp(HTTPErrorCode::BadServerResponse,
                      "the response's body is not what its encoding says");
    }
    return result == GzipDecoder::Result::Taken;
}

bool CurlTransfer::deliver(std::string_view bytes) {
    if (!_observer->didReceiveData(bytes)) {
        return giveUp(HTTPErrorCode::Unknown, "the receiver gave up");
    }
    return true;
}

std::size_t CurlTransfer::giveBody(char* buffer, std::size_t room) {
    if (isCancelled()) {
        return CURL_READFUNC_ABORT;
    }
    const std::size_t size = std::min(room, _body.size() - _hop->bodySent);
    if (size > 0) {
        moved();
        std::memcpy(buffer, _body.data() + _hop->bodySent, size);
        _hop->bodySent += size;
        _observer->didSendBody(static_cast<std::int64_t>(_hop->bodySent),
                               static_cast<std::int64_t>(_body.size()));
    }
    return size;
}

/// OpenSSL's session on the connection that is in use; null without TLS.
SSL* CurlTransfer::tlsSession() const {
    curl_tlssessioninfo* session = nullptr;
    curl_easy_getinfo(_easy, CURLINFO_TLS_SSL_PTR, &session);
    const bool isOpenSSL = session != nullptr && session->backend == CURLSSLBACKEND_OPENSSL;
    return isOpenSSL ? static_cast<SSL*>(session->internals) : nullptr;
}

void CurlTransfer::listenForFarewell() {
    SSL* session = tlsSession();
    if (session != nullptr && !speaksHTTP2(session)) {
        _hop->farewell = std::make_unique<TLSFarewell>(session);
    }
}

/// Whether the request may go out on the connection that libcurl has chosen for it.
bool CurlTransfer::acceptConnection(const std::string& ends) {
    // libcurl sends again by itself where a kept connection ends before the first byte of a
    // response. The server may have been at work on it, on a shared connection for long.
    // And where an HTTP/2 server asks for HTTP/1.1, even in the midst of its response.
    const bool isShared = _origin->protocol == CurlOrigin::Protocol::Multiplexed;
    const bool mayRepeat =
        isShared ? changesNothing(_request.method) : isRepeatable(_request.method);
    if (_hop->sent && !(mayRepeat && _hop->head.statusCode() == 0)) {
        return giveUp(HTTPErrorCode::ConnectionLost, "the connection was lost");
    }
    SSL* tls = tlsSession();
    const bool multiplexed = speaksHTTP2(tls);
    _origin->protocol =
        multiplexed ? CurlOrigin::Protocol::Multiplexed : CurlOrigin::Protocol::Serial;

    long connectionsMade = 0;
    curl_easy_getinfo(_easy, CURLINFO_NUM_CONNECTS, &connectionsMade);
    if (!multiplexed && connectionsMade == 0) {
        const curl_socket_t socket = _shared->sockets.find(ends);
        if (socket == CURL_SOCKET_BAD || hasStrayData(socket, tls)) {
            _hop->refusedConnection = true;
            _hop->sent = false;
            _hop->bodySent = 0;
            return false;
        }
    }
    _hop->sent = true;
    _hop->lastActivity = Clock::now();
    return true;
}

std::size_t CurlTransfer::onHeader(char* bytes, std::size_t size, std::size_t count,
                                   void* self) noexcept {
    auto& transfer = *static_cast<CurlTransfer*>(self);
    const std::string_view line(bytes, size * count);
    const bool goOn = transfer.inCallback(false, [&] { return transfer.takeHeaderLine(line); });
    return goOn ? line.size() : 0;
}

std::size_t CurlTransfer::onBody(char* bytes, std::size_t size, std::size_t count,
                                 void* self) noexcept {
    auto& transfer = *static_cast<CurlTransfer*>(self);
    const std::string_view body(bytes, size * count);
    const bool goOn = transfer.inCallback(false, [&] { return transfer.takeBody(body); });
    return goOn ? body.size() : 0;
}

std::size_t CurlTransfer::onRead(char* buffer, std::size_t size, std::size_t count,
                                 void* self) noexcept {
    auto& transfer = *static_cast<CurlTransfer*>(self);
    return transfer.inCallback(std::size_t{CURL_READFUNC_ABORT},
                               [&] { return transfer.giveBody(buffer, size * count); });
}

/// Remembers why a socket could not be made: libcurl only says that it could not connect.
curl_socket_t CurlTransfer::onOpenSocket(void* self, curlsocktype /*purpose*/,
                                         curl_sockaddr* address) noexcept {
    const int made = System::openSocket(address->family, address->socktype, address->protocol);
    static_cast<CurlTransfer*>(self)->_hop->lacksDescriptors =
        made == CURL_SOCKET_BAD && (errno == EMFILE || errno == ENFILE);
    return made;
}

/// Back to the start: libcurl goes nowhere else in a body that is sent from its start.
int CurlTransfer::onSeek(void* self, curl_off_t offset, int origin) noexcept {
    if (offset != 0 || origin != SEEK_SET) {
        return CURL_SEEKFUNC_FAIL;
    }
    static_cast<CurlTransfer*>(self)->_hop->bodySent = 0;
    return CURL_SEEKFUNC_OK;
}

int CurlTransfer::onProgress(void* self, curl_off_t /*downTotal*/, curl_off_t down,
                             curl_off_t /*upTotal*/, curl_off_t up) noexcept {
    // The callbacks above do not see everything that moves: a large read of the body drains into
    // the network later, and compressed bytes may come in for long before one comes out.
    auto& transfer = *static_cast<CurlTransfer*>(self);
    if (down + up != transfer._hop->moved) {
        transfer._hop->moved = down + up;
        transfer.moved();
    }
    return 0;
}

int CurlTransfer::onConnected(void* self, char* address, char* localAddress, int port,
                              int localPort) noexcept {
    auto& transfer = *static_cast<CurlTransfer*>(self);
    const bool accepted = transfer.inCallback(false, [&] {
        return transfer.acceptConnection(CurlSockets::ends(localAddress, localPort, address, port));
    });
    return accepted ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
}

} // namespace KeloAPI
