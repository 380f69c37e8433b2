#pragma once

#include <KeloAPI/platform/http/ServerTrustPolicy.hpp>

#include <curl/curl.h>

#include <string>

namespace KeloAPI {

/// A policy as the options that make libcurl judge by it. The certificates are part of what
/// libcurl compares before it uses a connection or a TLS session again.
class TrustStore {
public:
    /// Null stands for the default evaluation.
    explicit TrustStore(const ServerTrustPolicy* policy);

    /// True where no server whatever is accepted: nothing must be sent then.
    bool rejectsEveryServer() const { return _pinned && _pem.empty(); }
    bool isPinned() const { return _pinned; }

    /// The handle must not outlive this object.
    void applyTo(CURL* easy) const;

private:
    void applyPinned(CURL* easy) const;
    void applySystem(CURL* easy) const;

    bool _pinned = false;
    std::string _pem;
    // The system's store as every program finds it; empty for the built-in places.
    std::string _file;
    std::string _directory;
};

} // namespace KeloAPI
