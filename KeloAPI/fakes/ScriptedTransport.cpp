#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/fakes/ScriptedTransport.hpp>
#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/queues/SerialQueue.hpp>

#include <algorithm>
#include <deque>
#include <mutex>
#include <utility>

namespace KeloAPI::fakes {

struct ScriptedTransport::State {
    explicit State(std::shared_ptr<ManualClock> manualClock)
        : clock(std::move(manualClock)) {}

    const std::shared_ptr<ManualClock> clock;
    mutable std::mutex mutex;
    std::deque<ScriptedAnswer> answers;
    std::vector<std::shared_ptr<ScriptedExchange>> exchanges;
    SerialQueue queue{"Scripted"};
};

class ScriptedTransport::ScriptedExchange final
    : public Exchange,
      public std::enable_shared_from_this<ScriptedExchange> {
public:
    ScriptedExchange(URLRequest request, std::shared_ptr<ExchangeObserver> observer,
                     std::weak_ptr<State> state)
        : _request(std::move(request))
        , _observer(std::move(observer))
        , _state(std::move(state)) {}

    const URLRequest& request() const { return _request; }

    // Under the state's mutex.
    bool waits() const { return _observer != nullptr && !_isAnswered; }

    /// Under the state's mutex.
    void answer(State& state, ScriptedAnswer answer) {
        if (!waits()) {
            return;
        }
        _isAnswered = true;
        if (answer.delay <= std::chrono::milliseconds(0)) {
            end(state.queue, std::move(answer));
            return;
        }
        require(state.clock != nullptr, "a delayed answer needs a clock");
        endAfter(*state.clock, answer.delay, answer);
    }

    void endAfter(ManualClock& clock, std::chrono::milliseconds time, ScriptedAnswer answer) {
        clock.after(time, [weak = weak_from_this(), answer = std::move(answer)]() mutable {
            if (const auto self = weak.lock()) {
                self->endUnderLock(std::move(answer));
            }
        });
    }

    /// Ends the exchange on the queue, unless it has ended already. Under the state's mutex.
    void end(SerialQueue& queue, ScriptedAnswer answer) {
        if (_observer == nullptr) {
            return;
        }
        queue.async([self = shared_from_this(), observer = std::exchange(_observer, nullptr),
                     answer = std::move(answer)] { self->play(*observer, answer); });
    }

    void cancel() override { endUnderLock(cancelled()); }

    static ScriptedAnswer cancelled() {
        return ScriptedAnswer::failure(httpError(HTTPErrorCode::Cancelled, "cancelled"));
    }

private:
    void endUnderLock(ScriptedAnswer answer) {
        if (const auto state = _state.lock()) {
            const std::lock_guard lock(state->mutex);
            end(state->queue, std::move(answer));
        }
    }

    void play(ExchangeObserver& observer, const ScriptedAnswer& answer) const {
        if (_request.body) {
            const auto size = static_cast<std::int64_t>(_request.body->size());
            observer.didSendBody(size, size);
        }
        bool wanted = true;
        if (answer.statusCode != 0) {
            const auto length = answer.expectedContentLength.value_or(
                static_cast<std::int64_t>(answer.body.size()));
            HTTPResponse head{answer.url.value_or(*_request.url), answer.statusCode,
                              answer.headerFields, length};
            observer.didReceiveResponse(std::move(head));
            wanted = answer.body.empty() || observer.didReceiveData(answer.body);
        }
        if (!wanted && !answer.error) {
            observer.didComplete(httpError(HTTPErrorCode::Unknown, "the receiver gave up"));
        } else {
            observer.didComplete(answer.error);
        }
    }

    const URLRequest _request;
    std::shared_ptr<ExchangeObserver> _observer;
    bool _isAnswered = false;
    const std::weak_ptr<State> _state;
};

ScriptedAnswer ScriptedAnswer::json(std::string body) {
    return {200, {{"Content-Type", "application/json"}}, std::move(body), {}};
}

ScriptedAnswer ScriptedAnswer::failure(Error error) {
    return {0, {}, {}, std::move(error)};
}

ScriptedTransport::ScriptedTransport(std::shared_ptr<ManualClock> clock)
    : _state(std::make_shared<State>(std::move(clock))) {}

ScriptedTransport::~ScriptedTransport() {
    const std::lock_guard lock(_state->mutex);
    for (const auto& exchange : _state->exchanges) {
        exchange->end(_state->queue, ScriptedExchange::cancelled());
    }
}

void ScriptedTransport::answer(ScriptedAnswer answer) {
    const std::lock_guard lock(_state->mutex);
    for (const auto& exchange : _state->exchanges) {
        if (exchange->waits()) {
            exchange->answer(*_state, std::move(answer));
            return;
        }
    }
    _state->answers.push_back(std::move(answer));
}

void ScriptedTransport::answerRequest(std::size_t index, ScriptedAnswer answer) {
    const std::lock_guard lock(_state->mutex);
    if (index < _state->exchanges.size()) {
        _state->exchanges[index]->answer(*_state, std::move(answer));
    }
}

std::vector<URLRequest> ScriptedTransport::requests() const {
    const std::lock_guard lock(_state->mutex);
    std::vector<URLRequest> requests;
    requests.reserve(_state->exchanges.size());
    for (const auto& exchange : _state->exchanges) {
        requests.push_back(exchange->request());
    }
    return requests;
}

std::size_t ScriptedTransport::waitingCount() const {
    const std::lock_guard lock(_state->mutex);
    return static_cast<std::size_t>(
        std::count_if(_state->exchanges.begin(), _state->exchanges.end(),
                      [](const auto& exchange) { return exchange->waits(); }));
}

std::shared_ptr<Exchange> ScriptedTransport::start(const URLRequest& request,
                                                   std::shared_ptr<ExchangeObserver> observer,
                                                   TransferKind /*kind*/) {
    auto exchange = std::make_shared<ScriptedExchange>(request, std::move(observer), _state);
    const std::lock_guard lock(_state->mutex);
    _state->exchanges.push_back(exchange);
    if (_state->clock) {
        exchange->endAfter(*_state->clock, request.timeoutInterval,
                           ScriptedAnswer::failure(
                               httpError(HTTPErrorCode::TimedOut, "the response takes too long")));
    }
    if (!_state->answers.empty()) {
        exchange->answer(*_state, std::move(_state->answers.front()));
        _state->answers.pop_front();
    }
    return exchange;
}

} // namespace KeloAPI::fakes
