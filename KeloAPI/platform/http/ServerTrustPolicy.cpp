#include <KeloAPI/platform/http/ServerTrustPolicy.hpp>

#include <algorithm>

namespace KeloAPI {

namespace {

/// A host as the table keeps it: lower case, without port and without an IPv6 address's brackets.
std::string tableKey(std::string_view host) {
    if (host.starts_with('[')) {
        host = host.substr(1, host.find(']') - 1);
    } else if (std::count(host.begin(), host.end(), ':') == 1) {
        host = host.substr(0, host.find(':'));
    }
    std::string key(host);
    std::transform(key.begin(), key.end(), key.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return key;
}

} // namespace

ServerTrustPolicyManager::ServerTrustPolicyManager(
    std::map<std::string, ServerTrustPolicy> policies) {
    for (auto& [host, policy] : policies) {
        _policies.insert_or_assign(tableKey(host), std::move(policy));
    }
}

const ServerTrustPolicy* ServerTrustPolicyManager::policyForHost(std::string_view host) const {
    const auto found = _policies.find(tableKey(host));
    return found == _policies.end() ? nullptr : &found->second;
}

} // namespace KeloAPI
