#pragma once

#include <KeloAPI/base/Date.hpp>
#include <KeloAPI/base/Error.hpp>
#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/http/Method.hpp>
#include <KeloAPI/http/Transport.hpp>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace KeloAPI {

/// One exchange of a manager: a request with its redirects and retries. When a session sends a call
/// again after the user has signed in, that is another exchange.
struct ObservedExchange {
    std::uint64_t id = 0;                   ///< Unique within the process.
    TransferKind kind = TransferKind::Call; ///< An upload is a `Call`, too.
    Method method = Method::GET;            ///< The method of the first request.
    /// Where the first request goes; absent where it has no URL. The query may hold secrets.
    std::optional<URL> url;
    Date start; ///< When the manager was given the request.
};

/// One request of an exchange and what came of it: the first request, or the one that follows a
/// redirect, a retry or a lost connection.
///
/// The times of the steps count from `begin`. One is absent where the hop did not get that far;
/// where the connection was used before, the first three are. A proxy stands for the host.
struct HopReport {
    URL url = URL::empty();      ///< Where the request went. The query may hold secrets.
    Method method = Method::GET; ///< What it asked for.
    Date begin;                  ///< When its turn came.
    /// How long it waited before that, for one of the host's connections.
    std::chrono::microseconds waited{0};

    std::optional<std::chrono::microseconds> nameFound; ///< The host's name has an address.
    /// The connection stands. Absent, too, where the TLS handshake failed.
    std::optional<std::chrono::microseconds> connected;
    /// The TLS handshake is over; absent without TLS.
    std::optional<std::chrono::microseconds> secured;
    std::optional<std::chrono::microseconds> firstByte; ///< The response began to come.
    std::chrono::microseconds total{0};                 ///< The hop was over.

    bool reusedConnection = false; ///< The connection had served, or was serving, other requests.
    std::string protocol;          ///< "http/1.0", "http/1.1" or "h2"; empty before a response.
    /// Bytes of the request, head and body; over HTTP/2, the head as HTTP/1.1 would write it.
    std::int64_t bytesSent = 0;
    /// The same of the response, before content encodings are undone.
    std::int64_t bytesReceived = 0;
    int statusCode = 0; ///< 0 where no response came.
    /// Why the hop failed; absent where it did not, whatever the status.
    std::optional<Error> error;
};

/// Hears of every exchange of a manager, which has it from `TransportSettings::observer` and keeps
/// it until the last of its requests has gone. Where a manager has no observer, nothing is
/// measured.
///
/// Of each exchange it hears the start, then each hop, then the end exactly once, whether it
/// succeeds, fails, is cancelled or ends with its manager; only the exit of the process cuts this
/// short. An exchange that was never sent has no hop, nor has one over a transport of the host's
/// own that tells of none.
///
/// What it hears may hold secrets: a URL in its query, the message of an error where it names a
/// URL. Header fields and bodies are not among it.
///
/// `didStart` is called inside the call that sends the request, on its thread. The others come on
/// the library's threads, before the request's completions. The calls of one exchange come one
/// after another, those of different exchanges at the same time: an observer locks what it shares.
/// As other transfers wait meanwhile, it is quick, and it calls no manager.
class KELO_API TrafficObserver {
public:
    TrafficObserver() = default;
    TrafficObserver(const TrafficObserver&) = delete;
    TrafficObserver& operator=(const TrafficObserver&) = delete;
    virtual ~TrafficObserver() = default;

    /// A request was handed to the manager.
    virtual void didStart(const ObservedExchange& /*exchange*/) {}
    /// One of its hops is over.
    virtual void didFinishHop(const ObservedExchange& /*exchange*/, const HopReport& /*hop*/) {}
    /// The exchange was over at `end`, with the error that response handlers are given; absent
    /// where it went well, whatever the status.
    virtual void didEnd(const ObservedExchange& /*exchange*/, const std::optional<Error>& /*error*/,
                        Date /*end*/) {}
};

} // namespace KeloAPI
