#include <KeloAPI/platform/http/ServerTrustPolicy.hpp>
#include <KeloAPI/platform/URL.hpp>

#include <algorithm>

namespace KeloAPI {

namespace {

/// A host as the table keeps it: what a URL with this host would call it, without a final dot.
std::string tableKey(std::string_view host) {
    const auto url = URL::parse("https://" + std::string(host));
    std::string key = url ? url->host() : std::string(host);
    if (key.ends_with('.')) {
        key.pop_back();
    }
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
