#include <KeloAPI/platform/curl/CurlExchange.hpp>
#include <KeloAPI/platform/curl/CurlLanes.hpp>
#include <KeloAPI/platform/curl/CurlTransport.hpp>

namespace KeloAPI {

CurlTransport::CurlTransport(const ServerTrustPolicyManager& trust,
                             const TransportSettings& settings)
    : _lanes(std::make_shared<CurlLanes>(trust, settings)) {}

CurlTransport::~CurlTransport() {
    _lanes->close();
}

std::shared_ptr<Exchange> CurlTransport::start(const URLRequest& request,
                                               std::shared_ptr<ExchangeObserver> observer) {
    auto exchange = std::make_shared<CurlExchange>(request, std::move(observer), _lanes);
    exchange->begin();
    return exchange;
}

} // namespace KeloAPI
