#pragma once

#include <KeloAPI/base/Error.hpp>
#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/fakes/ManualClock.hpp>
#include <KeloAPI/http/HeaderFields.hpp>
#include <KeloAPI/http/Transport.hpp>
#include <KeloAPI/http/URLRequest.hpp>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// What a host's tests put in the place of a network.
namespace KeloAPI::fakes {

/// The outcome of a scripted exchange: a response, or an error in its place.
struct KELO_API ScriptedAnswer {
    int statusCode = 200;           ///< The status of the head.
    HeaderFields headerFields = {}; ///< The fields of the head; none by default.
    std::string body = {};          ///< As it is; no encoding is undone.
    /// When present, the exchange ends with it after the body.
    std::optional<Error> error = std::nullopt;
    /// What the head says of the body's length; its real length when absent.
    std::optional<std::int64_t> expectedContentLength = std::nullopt;
    /// Where the response came from, after redirects; the request's URL when absent.
    std::optional<URL> url = std::nullopt;
    /// How long it takes, by the transport's clock; a transport without one stops the process.
    std::chrono::milliseconds delay{0};

    /// A JSON response with this body.
    static ScriptedAnswer json(std::string body);
    /// No head, no body, only this error.
    static ScriptedAnswer failure(Error error);
};

/// A transport without a network, for tests of code that uses the library:
///
///     auto transport = std::make_shared<ScriptedTransport>();
///     session->setSessionManager(std::make_shared<Manager>(transport));
///     transport->answer(ScriptedAnswer::json(R"({"data": {}})"));
///
/// Requests take the responses in the order both come in; one that finds none waits. Over a clock,
/// a request that has no response yet when its `timeoutInterval` has passed ends with `TimedOut`;
/// without one it waits for ever. Usable from any thread; observers are called on a queue of the
/// transport's own.
class KELO_API ScriptedTransport final : public Transport {
public:
    /// Without a clock unless one is given.
    explicit ScriptedTransport(std::shared_ptr<ManualClock> clock = nullptr);
    /// Exchanges that still wait end with `HTTPErrorCode::Cancelled`.
    ~ScriptedTransport() override;

    /// Gives a response to the oldest request that waits, or to the next one that comes.
    void answer(ScriptedAnswer answer);
    /// Gives a response to one request, counted from 0 in the order they were started. One that
    /// has ended already is left alone.
    void answerRequest(std::size_t index, ScriptedAnswer answer);

    /// The requests that were started, oldest first.
    std::vector<URLRequest> requests() const;
    /// How many of them wait for a response that has not been given.
    std::size_t waitingCount() const;

    std::shared_ptr<Exchange> start(const URLRequest& request,
                                    std::shared_ptr<ExchangeObserver> observer,
                                    TransferKind /*kind*/) override;

private:
    class ScriptedExchange;
    struct State;
    std::shared_ptr<State> _state;
};

} // namespace KeloAPI::fakes
