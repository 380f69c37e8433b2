#pragma once

#include "CertificateCase.hpp"

#include <string>

namespace KeloAPI::testing {

/// What OpenSSL says of the same chain for the same host, with the same trust and its own limits
/// for TLS: "accepted" or its words for the error.
std::string verdictOfOpenSSL(const CertificateCase& each);

} // namespace KeloAPI::testing
