#include <KeloAPI/curl/internal/CurlExchange.hpp>
#include <KeloAPI/curl/internal/CurlLanes.hpp>
#include <KeloAPI/curl/internal/CurlTransport.hpp>
#include <KeloAPI/http/internal/makeTransport.hpp>

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

std::shared_ptr<Transport> makeTransport(const ServerTrustPolicyManager& trust,
                                         const TransportSettings& settings) {
    return std::make_shared<CurlTransport>(trust, settings);
}

} // namespace KeloAPI
