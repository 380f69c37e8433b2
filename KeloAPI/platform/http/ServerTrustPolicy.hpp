#pragma once

#include <KeloAPI/platform/Export.hpp>
#include <KeloAPI/platform/http/Certificate.hpp>

#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace KeloAPI {

/// The system's trust store decides; chain and host name are checked.
struct PerformDefaultEvaluation {};

/// Only these certificates are trusted, as leaf or as issuer; chain and host name are checked all
/// the same. An empty list rejects every server.
struct PinCertificates {
    std::vector<Certificate> certificates;
};

/// How a server's certificate is judged.
using ServerTrustPolicy = std::variant<PerformDefaultEvaluation, PinCertificates>;

/// The policies of single hosts. A host that is not listed gets the default evaluation.
class KELO_API ServerTrustPolicyManager {
public:
    /// Hosts are compared without regard to case, and a port, a path or a user beside one is
    /// ignored.
    explicit ServerTrustPolicyManager(
        const std::map<std::string, ServerTrustPolicy>& policies = {});

    /// The table, by hosts as they are compared.
    const std::map<std::string, ServerTrustPolicy, std::less<>>& policies() const {
        return _policies;
    }

    /// The policy listed for `host`; null when there is none.
    const ServerTrustPolicy* policyForHost(std::string_view host) const;

private:
    std::map<std::string, ServerTrustPolicy, std::less<>> _policies;
};

} // namespace KeloAPI
