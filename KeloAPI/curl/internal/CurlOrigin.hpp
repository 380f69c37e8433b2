#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>

namespace KeloAPI {

class CurlTransfer;
class TrustStore;

/// What a network thread knows of one origin (scheme, host and port) while transfers to it are in
/// flight or wait.
struct CurlOrigin {
    enum class Protocol : std::uint8_t { Unknown, Serial, Multiplexed };

    /// How many more transfers may be handed to libcurl. As long as nobody knows whether they can
    /// share a connection, one goes ahead and finds out.
    std::size_t room(std::size_t maxConnections) const {
        const std::size_t most = protocol == Protocol::Unknown  ? 1
                                 : protocol == Protocol::Serial ? maxConnections
                                                                : maxConnections * streams;
        return most - std::min(most, inFlight);
    }

    /// What libcurl puts on one HTTP/2 connection, where the server allows as many.
    static constexpr std::size_t streams = 100;

    /// What its servers are judged by.
    const TrustStore* trust = nullptr;
    Protocol protocol = Protocol::Unknown;
    std::size_t inFlight = 0;
    /// When a byte last moved on any connection to the origin.
    std::chrono::steady_clock::time_point lastMoved{};
    /// The transfers that wait, in the order in which they came.
    std::map<std::uint64_t, CurlTransfer*> waiting;
};

} // namespace KeloAPI
