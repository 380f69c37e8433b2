#pragma once

#include <KeloAPI/fakes/Cassette.hpp>
#include <KeloAPI/http/ServerTrustPolicy.hpp>
#include <KeloAPI/http/Transport.hpp>
#include <KeloAPI/http/TransportSettings.hpp>

#include <memory>

namespace KeloAPI::fakes {

/// Records into a cassette what goes over another transport:
///
///     auto cassette = std::make_shared<Cassette>();
///     auto transport = std::make_shared<RecordingTransport>(trust, cassette);
///     session->setSessionManager(std::make_shared<Manager>(transport));
///     // ... calls, and when they have completed:
///     cassette->save("feed.json");
///
/// Exchanges are recorded in the order in which they started; of one that is redirected or sent
/// again, the first request and the last response. An exchange is in the cassette before its
/// completion is called.
class KELO_API RecordingTransport final : public Transport {
public:
    /// Over any transport.
    RecordingTransport(std::shared_ptr<Transport> transport, std::shared_ptr<Cassette> cassette);
    /// Over HTTP, as a manager of its own would send.
    RecordingTransport(const ServerTrustPolicyManager& trust, std::shared_ptr<Cassette> cassette,
                       const TransportSettings& settings = {});

    std::shared_ptr<Exchange> start(const URLRequest& request,
                                    std::shared_ptr<ExchangeObserver> observer,
                                    TransferKind kind = TransferKind::Call) override;

private:
    class Observer;

    const std::shared_ptr<Transport> _transport;
    const std::shared_ptr<Cassette> _cassette;
};

} // namespace KeloAPI::fakes
