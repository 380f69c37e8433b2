#pragma once

#include <KeloAPI/http/ServerTrustPolicy.hpp>
#include <KeloAPI/http/Transport.hpp>
#include <KeloAPI/http/TransportSettings.hpp>

#include <sys/types.h>

#include <array>
#include <memory>
#include <mutex>

namespace KeloAPI {

class NetworkThread;

/// The library's own transport: HTTP/1.1 and HTTP/2 over TCP and TLS. It has two network threads,
/// one for calls and one for downloads, each made when it is first needed; observers are called on
/// them. Through a proxy for plain HTTP, all hosts behind it share the connections to it.
class CurlTransport final : public Transport {
public:
    explicit CurlTransport(const ServerTrustPolicyManager& trust,
                           const TransportSettings& settings = {});
    /// Completes what is under way with `Cancelled`, each observer once. When the destructor
    /// returns they have all heard, unless it runs inside a call of one of them: then they hear
    /// soon after.
    ~CurlTransport() override;

    std::shared_ptr<Exchange> start(const URLRequest& request,
                                    std::shared_ptr<ExchangeObserver> observer,
                                    TransferKind kind = TransferKind::Call) override;

private:
    std::shared_ptr<NetworkThread> threadFor(TransferKind kind);

    const ServerTrustPolicyManager _trust;
    const TransportSettings _settings;
    const pid_t _process;
    std::mutex _mutex;
    std::array<std::shared_ptr<NetworkThread>, 2> _threads;
};

} // namespace KeloAPI
