#pragma once

#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/http/Certificate.hpp>

#include <cstddef>
#include <map>
#include <string>
#include <variant>
#include <vector>

namespace KeloAPI {

/// The system's trust store decides; chain and host name are checked.
struct PerformDefaultEvaluation {};

/// Only these certificates are trusted, as leaf or as issuer; chain and host name are checked all
/// the same. An empty list rejects every server. The environment's SSLKEYLOGFILE is not honoured.
struct PinCertificates {
    std::vector<Certificate> certificates; ///< In any order.
};

/// How a server's certificate is judged.
using ServerTrustPolicy = std::variant<PerformDefaultEvaluation, PinCertificates>;

/// The policies of single hosts. A host that is not listed gets the default evaluation; one that
/// cannot be understood is refused.
class KELO_API ServerTrustPolicyManager {
public:
    /// Each host is listed as it stands in a URL, and looked up as `URL::host` gives it: case, a
    /// user before it, a port, a path or a query behind it make no difference. An entry
    /// that is not a host at all makes every request refused: nobody knows what it should protect.
    explicit ServerTrustPolicyManager(
        const std::map<std::string, ServerTrustPolicy>& policies = {});

    /// How many hosts are listed.
    std::size_t size() const { return _policies.size(); }

    /// The policy by which the server of `url` is judged; null for the default evaluation. A
    /// refusal is an empty list of pinned certificates. Valid as long as this object.
    const ServerTrustPolicy* policyFor(const URL& url) const;

private:
    std::map<std::string, ServerTrustPolicy> _policies;
    ServerTrustPolicy _refusal = PinCertificates{};
    bool _refusesAll = false;
};

} // namespace KeloAPI
