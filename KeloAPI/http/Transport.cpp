#include <KeloAPI/http/Transport.hpp>

namespace KeloAPI {

ExchangeObserver::~ExchangeObserver() = default;
Exchange::~Exchange() = default;
Transport::~Transport() = default;

} // namespace KeloAPI
