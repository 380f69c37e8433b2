#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/http/internal/BodySink.hpp>
#include <KeloAPI/http/Request.hpp>
#include <KeloAPI/http/TrafficObserver.hpp>
#include <KeloAPI/queues/MainQueue.hpp>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

namespace KeloAPI {

namespace {

void post(Request::Completion completion) {
    if (completion) {
        MainQueue::main().async(std::move(completion));
    }
}

Error noMemory() {
    return httpError(HTTPErrorCode::OutOfResources, "there is no memory for the response");
}

std::uint64_t nextExchangeId() {
    static constinit std::atomic<std::uint64_t> last = 0;
    return ++last;
}

/// How far a request is; it never goes back.
enum class Phase : std::uint8_t {
    Running,
    /// The exchange is over.
    Over,
    /// Its handlers have been served; later ones go by themselves.
    Served,
    /// And their completions have run.
    Delivered
};

} // namespace

/// What several threads touch. Each handler completes exactly once, whenever it is attached
/// (tests/interleavings).
struct Request::Guarded {
    std::mutex mutex;
    std::shared_ptr<Exchange> exchange;
    std::vector<Serializer> handlers;
    bool hasSlowHandler = false;
    Phase phase = Phase::Running;

    std::shared_ptr<const void> companion;
    Progress progress;
    std::int64_t reported = 0;
    std::int64_t total = 0;
    std::int64_t expected = -1;
    bool reportPosted = false;
};

Request::Request(KeloAPI::URLRequest request, TransferKind kind, Counts counts,
                 std::unique_ptr<BodySink> sink, ResponseQueues queues,
                 std::shared_ptr<TrafficObserver> observer)
    : _request(std::move(request))
    , _kind(kind)
    , _counts(counts)
    , _queues(std::move(queues))
    , _observer(std::move(observer))
    , _id(_observer ? nextExchangeId() : 0)
    , _sink(std::move(sink))
    , _guarded(std::make_unique<Guarded>()) {}

Request::~Request() = default;

void Request::start(Transport& transport) {
    _timeline.requestStartTime = Date::now();
    if (_observer) {
        _observer->didStart(observed());
    }
    if (auto reason = obstacle()) {
        // Nobody hears of the end inside the call.
        _queues.library->asyncOrOnMain(
            [self = shared_from_this(), reason = std::move(reason)]() mutable {
                self->didComplete(std::move(reason));
            });
        return;
    }
    // The transport keeps the request alive until it has completed.
    const std::shared_ptr<ExchangeObserver> self(shared_from_this(), this);
    auto exchange = transport.start(_request, self, _kind);
    const std::lock_guard lock(_guarded->mutex);
    if (_guarded->phase == Phase::Running) {
        _guarded->exchange = std::move(exchange);
    }
}

/// Why the request cannot be sent, if so.
std::optional<Error> Request::obstacle() const {
    if (_queues.library->isInherited()) {
        return httpError(HTTPErrorCode::Inherited,
                         "the connections belong to the parent of this forked process");
    }
    if (!_queues.library->open()) {
        return httpError(HTTPErrorCode::OutOfResources, "no thread can be made for the response");
    }
    return _request.problem();
}

ObservedExchange Request::observed() const {
    return {_id, _kind, _request.method, _request.url, _timeline.requestStartTime};
}

void Request::cancel() {
    std::shared_ptr<Exchange> exchange;
    {
        const std::lock_guard lock(_guarded->mutex);
        exchange = _guarded->exchange;
    }
    if (exchange) {
        exchange->cancel();
    }
}

void Request::progress(Progress observer) {
    bool isDue = false;
    {
        const std::lock_guard lock(_guarded->mutex);
        if (_guarded->phase != Phase::Delivered) {
            _guarded->progress.swap(observer); // the old one goes without the lock
            isDue = claimReport();
        }
    }
    if (isDue) {
        postReport();
    }
}

void Request::keep(std::shared_ptr<const void> companion) {
    const std::lock_guard lock(_guarded->mutex);
    if (_guarded->phase != Phase::Delivered) {
        _guarded->companion.swap(companion); // the old one goes without the lock
    }
}

void Request::response(Serializer serializer, ReadingPlace place) {
    require(serializer != nullptr, "a response handler must not be empty");
    {
        const std::lock_guard lock(_guarded->mutex);
        _guarded->hasSlowHandler = _guarded->hasSlowHandler || place == ReadingPlace::ResponseQueue;
        if (_guarded->phase < Phase::Served) {
            _guarded->handlers.push_back(std::move(serializer));
            return;
        }
    }
    serveLate(std::move(serializer));
}

void Request::serveLate(Serializer serializer) {
    readOnQueue([self = shared_from_this(), serializer = std::move(serializer)](bool) {
        post(self->serve(serializer));
    });
}

void Request::didReceiveResponse(HTTPResponse response) {
    _timeline.initialResponseTime = Date::now();
    _head = std::move(response);
    _sink->begin(*_head);
}

bool Request::didReceiveData(std::string_view bytes) {
    if (!_sink->take(bytes)) {
        return false;
    }
    _received += static_cast<std::int64_t>(bytes.size());
    if (_counts == Counts::BytesReceived) {
        reportProgress(_received, _head->expectedContentLength);
    }
    return true;
}

void Request::didSendBody(std::int64_t sent, std::int64_t total) {
    if (_counts == Counts::BytesSent) {
        reportProgress(sent, total);
    }
}

/// A transport may serve a manager that nobody observes beside one that somebody does.
void Request::didFinishHop(const HopReport& hop) {
    if (_observer) {
        _observer->didFinishHop(observed(), hop);
    }
}

void Request::didComplete(std::optional<Error> error) {
    _timeline.requestCompletedTime = Date::now();
    if (!_head) {
        _timeline.initialResponseTime = _timeline.requestCompletedTime;
    }
    std::shared_ptr<Exchange> exchange;
    {
        const std::lock_guard lock(_guarded->mutex);
        _guarded->phase = Phase::Over;
        _guarded->exchange.swap(exchange);
    }
    if (isReadWhereItArrived()) {
        end(std::move(error), _kind == TransferKind::Download);
        return;
    }
    readOnQueue([self = shared_from_this(), error = std::move(error)](bool mayBeSlow) mutable {
        self->end(std::move(error), mayBeSlow);
    });
}

/// All go through the one queue, so that they keep their order; those with a slow reader go on to
/// the other, where they hold up nobody else's.
void Request::readOnQueue(std::function<void(bool mayBeSlow)> task) {
    _queues.library->asyncOrOnMain([self = shared_from_this(), task = std::move(task)]() mutable {
        if (self->hasSlowHandler()) {
            self->_queues.hosts->asyncOrOnMain([task = std::move(task)] { task(true); });
        } else {
            task(false);
        }
    });
}

bool Request::hasSlowHandler() const {
    const std::lock_guard lock(_guarded->mutex);
    return _guarded->hasSlowHandler;
}

/// A download's thread waits for the disk anyway. Of a short response, handing it to the response
/// queue would cost more than reading it.
bool Request::isReadWhereItArrived() const {
    if (_kind == TransferKind::Download) {
        return true;
    }
    constexpr std::int64_t maxShort = 16 << 10;
    const std::lock_guard lock(_guarded->mutex);
    return _received <= maxShort && !_guarded->handlers.empty() && !_guarded->hasSlowHandler;
}

void Request::end(std::optional<Error> error, bool mayBeSlow) {
    try {
        _error = _sink->finish(std::move(error));
    } catch (const std::bad_alloc&) {
        _error = _sink->finish(noMemory());
    }
    if (_observer) {
        _observer->didEnd(observed(), _error, _timeline.requestCompletedTime);
    }
    Completion last;
    for (auto handlers = takeHandlers(mayBeSlow); !handlers.empty();
         handlers = takeHandlers(mayBeSlow)) {
        for (const Serializer& serializer : handlers) {
            post(std::move(last));
            last = serve(serializer);
        }
    }
    deliver(std::move(last));
    // Those that were attached meanwhile go by themselves, and so do later ones.
    std::vector<Serializer> late;
    {
        const std::lock_guard lock(_guarded->mutex);
        _guarded->phase = std::max(_guarded->phase, Phase::Served);
        _guarded->handlers.swap(late);
    }
    for (Serializer& serializer : late) {
        serveLate(std::move(serializer));
    }
}

/// Progress that was reported is delivered before the last completion; after it the observer and
/// the companion are released, which may hold the request. Where none is there, the main queue is
/// not woken.
void Request::deliver(Completion last) {
    {
        const std::lock_guard lock(_guarded->mutex);
        if (!last && !_guarded->progress && !_guarded->companion) {
            _guarded->phase = Phase::Delivered;
            return;
        }
    }
    MainQueue::main().async([self = shared_from_this(), last = std::move(last)] {
        self->deliverProgress(); // for an observer that came while this was waiting
        if (last) {
            last();
        }
        std::shared_ptr<const void> companion; // goes behind the observer
        Progress observer;
        const std::lock_guard lock(self->_guarded->mutex);
        self->_guarded->companion.swap(companion);
        self->_guarded->phase = Phase::Delivered;
        self->_guarded->progress.swap(observer);
    });
}

/// None where one is slow and this is not the place for it.
std::vector<Request::Serializer> Request::takeHandlers(bool mayBeSlow) {
    const std::lock_guard lock(_guarded->mutex);
    return _guarded->hasSlowHandler && !mayBeSlow ? std::vector<Serializer>()
                                                  : std::exchange(_guarded->handlers, {});
}

Request::Completion Request::serve(const Serializer& serializer) const {
    const ResponseContent content{_request, _head, _sink->body(), _error};
    Timeline timeline = _timeline;
    timeline.serializationCompletedTime = timeline.requestCompletedTime;
    try {
        return serializer(content, timeline);
    } catch (const std::bad_alloc&) {
        if (_sink->body().empty()) {
            throw; // not the response's doing
        }
    }
    const std::optional<Error> error = noMemory();
    return serializer({_request, _head, std::string(), error}, timeline);
}

void Request::reportProgress(std::int64_t total, std::int64_t expected) {
    {
        const std::lock_guard lock(_guarded->mutex);
        // A body that is sent again is told of where it gets beyond what moved before.
        if (total <= _guarded->total) {
            return;
        }
        _guarded->total = total;
        _guarded->expected = expected;
        if (!claimReport()) {
            return;
        }
    }
    postReport();
}

/// True where a report is to be posted, by the caller and without the lock: the main queue may be
/// the host's. Where nobody listens, the main thread is not woken for each run of bytes.
bool Request::claimReport() {
    const bool isDue =
        _guarded->progress && !_guarded->reportPosted && _guarded->total != _guarded->reported;
    _guarded->reportPosted = _guarded->reportPosted || isDue;
    return isDue;
}

void Request::postReport() {
    MainQueue::main().async([self = shared_from_this()] { self->deliverProgress(); });
}

void Request::deliverProgress() {
    Progress observer;
    std::int64_t bytes = 0;
    std::int64_t total = 0;
    std::int64_t expected = 0;
    {
        const std::lock_guard lock(_guarded->mutex);
        _guarded->reportPosted = false;
        if (_guarded->total == _guarded->reported) {
            return;
        }
        observer = _guarded->progress;
        total = _guarded->total;
        expected = _guarded->expected;
        bytes = total - std::exchange(_guarded->reported, total);
    }
    if (observer) {
        observer(bytes, total, expected);
    }
}

} // namespace KeloAPI
