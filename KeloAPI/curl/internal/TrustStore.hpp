#pragma once

#include <KeloAPI/http/ServerTrustPolicy.hpp>

#include <string>

namespace KeloAPI {

class CurlOptions;

/// A policy as the options that make libcurl judge by it. The certificates are part of what
/// libcurl compares before it uses a connection or a TLS session again.
class TrustStore {
public:
    /// Null stands for the default evaluation.
    explicit TrustStore(const ServerTrustPolicy* policy);

    /// True where no server whatever is accepted: nothing must be sent then.
    bool rejectsEveryServer() const { return _pinned && _pem.empty(); }
    bool isPinned() const { return _pinned; }

    /// The handle that is set up must not outlive this object.
    void applyTo(CurlOptions& options) const;

private:
    void applyPinned(CurlOptions& options) const;
    void applySystem(CurlOptions& options) const;

    bool _pinned = false;
    std::string _pem;
    // The system's store as every program finds it; empty for the built-in places.
    std::string _file;
    std::string _directory;
};

} // namespace KeloAPI
