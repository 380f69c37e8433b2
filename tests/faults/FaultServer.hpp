#pragma once

#include "Fault.hpp"
#include "support/RawServer.hpp"

#include <atomic>
#include <semaphore>
#include <string>

namespace KeloAPI::testing {

/// A server with one fault, and well before and after it.
class FaultServer {
public:
    /// Both must outlive it.
    FaultServer(const Fault& fault, const Surroundings& around);

    /// With its port.
    std::string host() const { return "127.0.0.1:" + std::to_string(_server.port()); }
    std::string url(const std::string& path) const { return "https://" + host() + path; }

    void setAtFault() { _isAtFault = true; }
    /// Well from now on. Returns when a fault that outlasts its call is over.
    void recover();

    // Of a fault that outlasts its call:
    /// Waits until the call is over.
    void waitForRecovery();
    /// The client has what was sent to it.
    void tellThatItIsDone(const RawConnection& connection);

private:
    void serve(RawConnection& raw);
    void serveHTTP1(RawConnection& connection);
    void serveHTTP2(RawConnection& connection);
    bool strikes();

    const Fault& _fault;
    const Surroundings& _around;
    std::atomic<bool> _isAtFault;
    std::atomic<bool> _hasStruck = false;
    std::binary_semaphore _recovering{0};
    std::binary_semaphore _done{0};
    RequestLog _log{0};
    RawServer _server; // goes first, with the threads that use the others
};

} // namespace KeloAPI::testing
