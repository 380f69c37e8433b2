#pragma once

#include "Rule.hpp"
#include "support/FrameConnection.hpp"
#include "support/RawServer.hpp"
#include "Surroundings.hpp"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace KeloAPI::testing {

class FaultServer;

/// A request that a fault is to meet.
struct Encounter {
    RawConnection& connection;
    FaultServer& server;
    const Surroundings& around;
};

/// Meets a request. False ends the connection.
using Strike = std::function<bool(const Encounter&)>;
/// The same over HTTP/2, with the request's stream.
using FrameStrike = std::function<bool(FrameConnection&, std::uint32_t stream)>;

enum class Speaks : std::uint8_t { HTTP1, HTTP2, Plain };

/// One way in which a server can be at fault, and how each call has to end under it.
struct Fault {
    std::string row;          ///< In the table, where several faults may share one.
    std::string variant = {}; ///< Which of them; empty where it is alone.
    Rule rule;
    Strike strike = nullptr;
    FrameStrike frames = nullptr;
    /// Takes the place of TLS's handshake.
    std::function<void(RawConnection&, SSL_CTX*)> handshake = nullptr;
    Speaks speaks = Speaks::HTTP1;
    /// By whose certificate the server is known.
    std::shared_ptr<SSL_CTX> Surroundings::*certificate = &Surroundings::tls;
    /// Where the call goes in place of the server.
    std::function<std::string(const Surroundings&)> host = nullptr;
    /// Does not wait for the request.
    bool isEarly = false;
    /// Comes after a call on the same connection that was well.
    bool isLate = false;
    /// Strikes one request only, however often the call is sent.
    bool isOnce = false;
    /// The server goes on with its fault when the call is over, until it has told that it is done.
    bool outlasts = false;
    /// Never silent for long: only the limit of the whole answer ends it.
    bool isSlow = false;
    /// What a stream may carry towards the server.
    std::uint32_t window = 0x7FFFFFFF;
};

/// How a server takes leave of a connection.
enum class Leave : std::uint8_t { Stay, Close, Farewell, Reset, Silence };
bool leave(const RawConnection& connection, Leave how);

/// Says it byte by byte, each a while after the other, and begins again where it ends: until the
/// client goes.
void drip(const RawConnection& connection, const std::string& bytes);

// Strikes

Strike saying(std::string bytes, Leave how = Leave::Stay);
/// Says `piece` again and again: until the client goes, or so many bytes and then nothing.
Strike sayingOn(std::string begin, std::string piece, std::size_t most = SIZE_MAX);
Strike dripping(std::string bytes);
Strike redirecting(const std::string& status,
                   std::function<std::string(const Encounter&)> location);

/// The ways to break off, with the words for them and what comes of it.
struct BreakingOff {
    Leave how;
    const char* name;
    HTTPErrorCode code;
};
inline constexpr std::array<BreakingOff, 4> breakingOff = {{
    {Leave::Close, "closed", HTTPErrorCode::ConnectionLost},
    {Leave::Farewell, "closed with TLS's farewell", HTTPErrorCode::ConnectionLost},
    {Leave::Reset, "reset", HTTPErrorCode::ConnectionLost},
    {Leave::Silence, "silence", HTTPErrorCode::TimedOut},
}};

/// A response that breaks off at each of these places, in each of the ways.
std::vector<Fault> cutting(const std::string& where, const std::string& bytes,
                           const std::vector<std::size_t>& places);

inline void append(std::vector<Fault>& faults, std::vector<Fault> more) {
    std::move(more.begin(), more.end(), std::back_inserter(faults));
}

} // namespace KeloAPI::testing
