#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/http/Request.hpp>
#include <KeloAPI/queues/MainQueue.hpp>

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
    return httpError(HTTPErrorCode::OutOfResources, "there is no memory for the answer");
}

} // namespace

/// What several threads touch.
struct Request::Guarded {
    std::mutex mutex;
    std::shared_ptr<Exchange> exchange;
    std::vector<Serializer> handlers;
    bool over = false;      // the exchange is
    bool served = false;    // and so are the handlers; later ones go by themselves
    bool delivered = false; // and their completions have run

    Progress progress;
    std::int64_t reported = 0;
    std::int64_t total = 0;
    std::int64_t expected = -1;
    bool reportPosted = false;
};

/// Keeps the request alive while the transport works on it.
class Request::Observer final : public ExchangeObserver {
public:
    explicit Observer(std::shared_ptr<Request> request)
        : _request(std::move(request)) {}

    void didSendRequest() override { _request->requestSent(); }
    void didReceiveResponse(HTTPResponse response) override {
        _request->_timeline.initialResponseTime = Date::now();
        _request->_head = std::move(response);
        _request->receiveResponse(*_request->_head);
    }
    bool didReceiveData(std::string_view bytes) override { return _request->receiveData(bytes); }
    void didSendBody(std::int64_t sent, std::int64_t total) override {
        _request->bodySent(sent, total);
    }
    void didComplete(std::optional<Error> error) override {
        std::exchange(_request, nullptr)->complete(std::move(error));
    }
    bool mayWaitForDisk() const override { return _request->mayWaitForDisk(); }

private:
    std::shared_ptr<Request> _request;
};

Request::Request(KeloAPI::URLRequest request, std::shared_ptr<SerialQueue> responseQueue)
    : _request(std::move(request))
    , _responseQueue(std::move(responseQueue))
    , _guarded(std::make_unique<Guarded>()) {}

Request::~Request() = default;

void Request::start(Transport& transport) {
    _timeline.requestStartTime = Date::now();
    if (auto reason = obstacle()) {
        // Nobody hears of the end inside the call.
        _responseQueue->asyncOrOnMain(
            [self = shared_from_this(), reason = std::move(reason)]() mutable {
                self->complete(std::move(reason));
            });
        return;
    }
    auto exchange = transport.start(_request, std::make_shared<Observer>(shared_from_this()));
    const std::lock_guard lock(_guarded->mutex);
    if (!_guarded->over) {
        _guarded->exchange = std::move(exchange);
    }
}

/// Why the request cannot be sent, if so.
std::optional<Error> Request::obstacle() const {
    if (_responseQueue->isInherited()) {
        return httpError(HTTPErrorCode::Inherited,
                         "the connections belong to the parent of this forked process");
    }
    if (!_responseQueue->open()) {
        return httpError(HTTPErrorCode::OutOfResources, "no thread can be made for the answer");
    }
    return _request.problem();
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
    const std::lock_guard lock(_guarded->mutex);
    if (!_guarded->delivered) {
        _guarded->progress.swap(observer); // the old one goes without the lock
        postReport();
    }
}

/// Where nothing is left for the main queue, it is not woken.
bool Request::endsUnheard() {
    const std::lock_guard lock(_guarded->mutex);
    _guarded->delivered = !_guarded->progress;
    return _guarded->delivered;
}

void Request::endProgress() {
    Progress observer;
    const std::lock_guard lock(_guarded->mutex);
    _guarded->delivered = true;
    _guarded->progress.swap(observer);
}

void Request::response(Serializer serializer) {
    require(serializer != nullptr, "a response handler must not be empty");
    {
        const std::lock_guard lock(_guarded->mutex);
        if (!_guarded->served) {
            _guarded->handlers.push_back(std::move(serializer));
            return;
        }
    }
    _responseQueue->asyncOrOnMain([self = shared_from_this(), serializer = std::move(serializer)] {
        post(self->serve(serializer));
    });
}

void Request::complete(std::optional<Error> error) {
    _timeline.requestCompletedTime = Date::now();
    if (!_head) {
        _timeline.initialResponseTime = _timeline.requestCompletedTime;
    }
    std::shared_ptr<Exchange> exchange;
    {
        const std::lock_guard lock(_guarded->mutex);
        _guarded->over = true;
        _guarded->exchange.swap(exchange);
    }
    if (mayWaitForDisk()) {
        end(std::move(error));
        return;
    }
    _responseQueue->asyncOrOnMain([self = shared_from_this(), error = std::move(error)]() mutable {
        self->end(std::move(error));
    });
}

void Request::end(std::optional<Error> error) {
    try {
        _error = finish(std::move(error));
    } catch (const std::bad_alloc&) {
        _error = finish(noMemory());
    }
    Completion last;
    for (auto handlers = takeHandlers(); !handlers.empty(); handlers = takeHandlers()) {
        for (const Serializer& serializer : handlers) {
            post(std::move(last));
            last = serve(serializer);
        }
    }
    if (!last && endsUnheard()) {
        return;
    }
    // Progress that was reported is delivered before the completions; behind them its observer,
    // which may hold the request, goes: by the same task, because a task wakes the main thread.
    MainQueue::main().async([self = shared_from_this(), last = std::move(last)] {
        if (last) {
            last();
        }
        self->endProgress();
    });
}

/// Those that were attached meanwhile, and so behind the ones before; when there are none, later
/// ones go by themselves.
std::vector<Request::Serializer> Request::takeHandlers() {
    const std::lock_guard lock(_guarded->mutex);
    _guarded->served = _guarded->handlers.empty();
    return std::exchange(_guarded->handlers, {});
}

Request::Completion Request::serve(const Serializer& serializer) const {
    const ResponseContent content{_request, _head, _body, _error};
    Timeline timeline = _timeline;
    timeline.serializationCompletedTime = timeline.requestCompletedTime;
    try {
        return serializer(content, timeline);
    } catch (const std::bad_alloc&) {
        if (_body.empty()) {
            throw; // not the answer's doing
        }
    }
    const std::optional<Error> error = noMemory();
    return serializer({_request, _head, std::string(), error}, timeline);
}

void Request::reportProgress(std::int64_t total, std::int64_t expected) {
    const std::lock_guard lock(_guarded->mutex);
    // A body that a redirect sends again is told of where it gets beyond what moved before.
    if (total <= _guarded->total) {
        return;
    }
    _guarded->total = total;
    _guarded->expected = expected;
    postReport();
}

void Request::postReport() {
    // Where nobody listens, the main thread is not woken for each run of bytes.
    if (_guarded->progress && !_guarded->reportPosted && _guarded->total != _guarded->reported) {
        _guarded->reportPosted = true;
        MainQueue::main().async([self = shared_from_this()] { self->deliverProgress(); });
    }
}

void Request::deliverProgress() {
    Progress observer;
    std::int64_t bytes = 0;
    std::int64_t total = 0;
    std::int64_t expected = 0;
    {
        const std::lock_guard lock(_guarded->mutex);
        _guarded->reportPosted = false;
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
