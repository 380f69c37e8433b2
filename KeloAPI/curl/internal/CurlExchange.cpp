#include <KeloAPI/curl/internal/CurlExchange.hpp>
#include <KeloAPI/curl/internal/CurlLanes.hpp>
#include <KeloAPI/curl/internal/CurlLoop.hpp>
#include <KeloAPI/curl/internal/Redirect.hpp>
#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/queues/SerialQueue.hpp>

#include <exception>

namespace KeloAPI {

namespace {

/// Two servers in a row may go away; a third one that does is not well.
constexpr int mostResends = 2;

} // namespace

CurlExchange::CurlExchange(const URLRequest& request, std::shared_ptr<ExchangeObserver> observer,
                           std::shared_ptr<CurlLanes> lanes)
    : _request(request)
    , _observer(std::move(observer))
    , _lanes(std::move(lanes)) {}

CurlExchange::~CurlExchange() = default;

std::uint64_t CurlExchange::nextOrder() {
    static std::atomic<std::uint64_t> last = 0;
    return ++last;
}

void CurlExchange::begin() {
    std::shared_ptr<CurlLoop> lane;
    try {
        lane = _lanes->laneFor(*_request.url, _observer->mayWaitForDisk());
    } catch (const std::exception& failure) { // no thread, no descriptor or no memory
        // The caller of `start` must not hear of the end inside its call. The queue goes when its
        // one task has run.
        SerialQueue("kelo-no-net")
            .asyncOrOnMain([self = shared_from_this(),
                            error = httpError(HTTPErrorCode::OutOfResources,
                                              std::string("no network thread: ") +
                                                  failure.what())] { self->complete(error); });
        return;
    }
    {
        const std::lock_guard lock(_mutex);
        _lane = lane;
    }
    if (lane == nullptr || !lane->start(shared_from_this())) {
        complete(httpError(HTTPErrorCode::Cancelled, "the transport has gone"));
    }
}

void CurlExchange::cancel() {
    std::shared_ptr<CurlLoop> lane;
    {
        const std::lock_guard lock(_mutex);
        if (_lanes == nullptr) {
            return; // over
        }
        _cancelled = true;
        lane = _lane;
    }
    // Between two legs there is nobody to tell: the next lane sees the mark when it takes over.
    if (lane != nullptr) {
        lane->cancel(shared_from_this());
    }
}

void CurlExchange::follow(int statusCode, const HeaderFields& fields) {
    if (++_redirects > mostRedirects) {
        complete(httpError(HTTPErrorCode::TooManyRedirects, "too many redirects"));
        return;
    }
    Result<URLRequest> next = redirected(_request, statusCode, fields);
    if (!next) {
        complete(next.error());
        return;
    }
    _request = std::move(next.value());
    begin();
}

void CurlExchange::sendAgain(Error error) {
    if (++_resends > mostResends) {
        complete(std::move(error));
    } else {
        begin();
    }
}

void CurlExchange::complete(std::optional<Error> error) {
    std::shared_ptr<CurlLanes> lanes;
    std::shared_ptr<CurlLoop> lane;
    {
        const std::lock_guard lock(_mutex);
        if (_lanes == nullptr) {
            return;
        }
        lanes.swap(_lanes);
        lane.swap(_lane);
        if (_cancelled && !(error && isHTTPError(*error, HTTPErrorCode::Cancelled))) {
            error = httpError(HTTPErrorCode::Cancelled, "the request was cancelled");
        }
    }
    const std::shared_ptr<ExchangeObserver> observer = std::move(_observer);
    _request = {};
    observer->didComplete(std::move(error));
}

} // namespace KeloAPI
