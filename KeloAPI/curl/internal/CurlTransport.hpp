#pragma once

#include <KeloAPI/http/ServerTrustPolicy.hpp>
#include <KeloAPI/http/Transport.hpp>
#include <KeloAPI/http/TransportSettings.hpp>

namespace KeloAPI {

class CurlLanes;

/// The library's own transport: HTTP/1.1 and HTTP/2 over TCP and TLS.
///
/// Observers are called on the transport's own threads: one for each policy of the table and one
/// for all other hosts, and as many again for observers that may wait for a disk, each started when
/// first needed. Between two legs of an exchange (a redirect to a host of another policy) the calls
/// move from one to the other.
///
/// Each of these threads keeps to the settings' limits by itself, and has its share of the idle
/// connections. Through a proxy for plain HTTP, all hosts behind it share the connections to it.
class CurlTransport final : public Transport {
public:
    explicit CurlTransport(const ServerTrustPolicyManager& trust,
                           const TransportSettings& settings = {});
    /// Completes what is under way with `Cancelled`, each observer once. When the destructor
    /// returns they have all heard, unless it runs inside a call of one of them: then they hear
    /// soon after.
    ~CurlTransport() override;

    std::shared_ptr<Exchange> start(const URLRequest& request,
                                    std::shared_ptr<ExchangeObserver> observer) override;

private:
    std::shared_ptr<CurlLanes> _lanes;
};

} // namespace KeloAPI
