#include <KeloAPI/http/ServerTrustPolicy.hpp>

namespace KeloAPI {

namespace {

/// The host of a URL that has `entry` behind its scheme; empty where that is not a URL. An IPv6
/// address may stand without its brackets.
std::string hostOfEntry(const std::string& entry) {
    auto url = URL::parse("https://" + entry);
    if (!url) {
        url = URL::parse("https://[" + entry + "]");
    }
    return url ? url->host() : std::string();
}

} // namespace

ServerTrustPolicyManager::ServerTrustPolicyManager(
    const std::map<std::string, ServerTrustPolicy>& policies) {
    for (const auto& [entry, policy] : policies) {
        std::string host = hostOfEntry(entry);
        _refusesAll = _refusesAll || host.empty();
        _policies.insert_or_assign(std::move(host), policy);
    }
}

const ServerTrustPolicy* ServerTrustPolicyManager::policyFor(const URL& url) const {
    const std::string host = url.host();
    if (_refusesAll || host.empty()) {
        return &_refusal;
    }
    const auto found = _policies.find(host);
    return found == _policies.end() ? nullptr : &found->second;
}

} // namespace KeloAPI
