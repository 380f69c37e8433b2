#pragma once

#include <KeloAPI/curl/internal/CurlTransport.hpp>
#include <KeloAPI/http/Transport.hpp>

#include <algorithm>
#include <chrono>
#include <memory>
#include <vector>

namespace KeloAPI::testing {

/// The real transport, which is told how much silence the next request may bear.
class TimedTransport final : public Transport {
public:
    TimedTransport(const ServerTrustPolicyManager& trust, const TransportSettings& settings)
        : _transport(trust, settings) {}

    std::shared_ptr<Exchange> start(const URLRequest& request,
                                    std::shared_ptr<ExchangeObserver> observer,
                                    TransferKind kind) override {
        URLRequest timed = request;
        timed.timeoutInterval = silence;
        _observers.push_back(observer);
        return _transport.start(timed, std::move(observer), kind);
    }

    /// How many of all its requests are kept alive by anybody.
    std::size_t alive() const {
        return static_cast<std::size_t>(
            std::count_if(_observers.begin(), _observers.end(),
                          [](const auto& observer) { return !observer.expired(); }));
    }

    std::chrono::milliseconds silence{0};

private:
    CurlTransport _transport;
    std::vector<std::weak_ptr<ExchangeObserver>> _observers;
};

} // namespace KeloAPI::testing
