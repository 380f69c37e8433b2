#include "Surroundings.hpp"

#include "support/FrameConnection.hpp"
#include "support/Loopback.hpp"

#include <unistd.h>

namespace KeloAPI::testing {

std::string answerOf(const std::string& body, const std::string& status,
                     const std::string& fields) {
    return "HTTP/1.1 " + status + "\r\nContent-Type: application/json\r\n" + fields +
           "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

/// Its queue holds one connection, and one is in it: the system passes over those that follow.
DeafListener::DeafListener()
    : _waiting(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    const LoopbackListener listener;
    _listener = listener.socket;
    _port = listener.port;
    const sockaddr_in address = loopbackAddress(_port);
    if (::listen(_listener, 0) != 0 ||
        ::connect(_waiting, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        throw std::runtime_error("the queue of a listener cannot be filled");
    }
}

DeafListener::~DeafListener() {
    ::close(_waiting);
    ::close(_listener);
}

std::string DeafListener::host() const {
    return "127.0.0.1:" + std::to_string(_port);
}

Surroundings::Surroundings() {
    FrameConnection::offer(tlsWithHTTP2.get());
    SSL_CTX_set_max_proto_version(oldTLS.get(), TLS1_1_VERSION);
}

ServerTrustPolicyManager Surroundings::policies() const {
    const PinCertificates pinned{{leaf.certificate(), expired.certificate(), notYet.certificate(),
                                  ofOtherName.certificate()}};
    return ServerTrustPolicyManager({{"127.0.0.1", pinned}, {"localhost", pinned}});
}

} // namespace KeloAPI::testing
