#pragma once

#include <cstddef>

namespace KeloAPI {

/// What a manager's transport allows itself.
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
    /// with more connections in use closes those that come to rest.
    std::size_t maxIdleConnections = 64;
};

} // namespace KeloAPI
