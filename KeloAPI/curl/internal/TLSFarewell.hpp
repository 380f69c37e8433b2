#pragma once

#include <openssl/ssl.h>

#include <memory>

namespace KeloAPI {

/// Listens for the alert by which TLS ends a connection. Where a body ends with its connection,
/// nothing else tells a whole one from one that somebody on the way has cut short; libcurl takes
/// both for whole.
class TLSFarewell {
public:
    /// Of this session, which may go before this object or after it.
    explicit TLSFarewell(SSL* session);

    bool wasHeard() const { return *_wasHeard; }

private:
    std::shared_ptr<bool> _wasHeard = std::make_shared<bool>(false);
};

} // namespace KeloAPI
