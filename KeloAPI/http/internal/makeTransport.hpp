#pragma once

#include <KeloAPI/http/ServerTrustPolicy.hpp>
#include <KeloAPI/http/Transport.hpp>
#include <KeloAPI/http/TransportSettings.hpp>

#include <memory>

namespace KeloAPI {

/// The transport of a manager that is given none. Defined by the room that implements it.
std::shared_ptr<Transport> makeTransport(const ServerTrustPolicyManager& trust,
                                         const TransportSettings& settings);

} // namespace KeloAPI
