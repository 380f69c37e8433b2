#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>

namespace KeloAPI {

class TrafficObserver;

/// Sends again what failed for a passing reason: the connection could not be made or was lost
/// before a response, or the response was 429, 502, 503 or 504. Only for methods that may be
/// repeated (all but POST and PATCH). The request keeps its body until its end; the
/// completion is still called once, with what came of the last attempt.
struct RetrySettings {
    /// 0: nothing is sent again, but for a request of such a method whose kept connection the
    /// server closes before it responds.
    int maxRetries = 0;
    /// Before the first retry; each further pause is twice as long. A random part of up to one half
    /// is taken off, so that clients do not come back all at once.
    std::chrono::milliseconds firstPause{500};
    /// No pause is longer. A response whose Retry-After field asks for more is the outcome; a
    /// shorter one is honoured.
    std::chrono::milliseconds maxPause{30'000};
};

/// The limits of a manager, and who observes it. The defaults suit an app on a phone.
///
/// Calls beyond a limit of connections wait, in their order, and their time-outs run from when they
/// are sent. One that has waited as long as its time-out, while no byte moved on any connection to
/// its host, ends as timed out and is never sent. Over HTTP/2 up to 100 calls share a connection.
struct TransportSettings {
    /// Connections to one host at a time; 0 counts as 1.
    std::size_t maxCallConnectionsPerHost = 6;
    /// The same for downloads, which have connections of their own.
    std::size_t maxDownloadConnectionsPerHost = 6;
    /// Connections that the manager keeps for their next use, and never more than a quarter of the
    /// descriptors that the process may have. Its network threads share them equally; a thread
    /// with more connections in use closes those that come to rest, and each keeps one at least.
    std::size_t maxIdleConnections = 64;

    /// How long it may take to connect, name lookup and TLS included. Absent: as long as silence.
    std::optional<std::chrono::milliseconds> connectTimeout = std::nullopt;
    /// How long no byte may move. A request's own `timeoutInterval` holds where it is shorter, or
    /// where this is absent.
    std::optional<std::chrono::milliseconds> silenceTimeout = std::nullopt;
    /// How long a request may take from when it is first sent to the end of its response, redirects
    /// and retries included. Absent: any time.
    std::optional<std::chrono::milliseconds> responseTimeout = std::nullopt;

    /// Bytes in the head of a response, with its interim responses and trailers. More are
    /// `BadServerResponse`.
    std::size_t maxHeadBytes = std::size_t{256} << 10U;
    /// Bytes in a response that is kept in memory; more are `BodyTooLarge`. No response of the
    /// service comes near it: a body that does is an accident or an attack.
    std::size_t maxBodyBytes = std::size_t{256} << 20U;
    /// Bytes of all responses in the memory of this process, of other managers' too; beyond them a
    /// call ends with `OutOfResources`.
    std::size_t maxBodyBytesInProcess = std::size_t{1} << 30U;

    /// The URL of a proxy for every request; empty for none. Absent: what the environment names.
    std::optional<std::string> proxy = std::nullopt;

    RetrySettings retries = {}; ///< None by default.

    /// Hears of every exchange; null for nobody. One may serve several managers.
    std::shared_ptr<TrafficObserver> observer = nullptr;
};

} // namespace KeloAPI
