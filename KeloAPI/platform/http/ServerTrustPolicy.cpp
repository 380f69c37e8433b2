#include <KeloAPI/platform/http/ServerTrustPolicy.hpp>
#include <KeloAPI/platform/URL.hpp>

#include <algorithm>
#include <optional>

namespace KeloAPI {

namespace {

/// An IPv6 address, with or without the brackets and the port that go with it; none for others.
std::optional<std::string_view> addressIn(std::string_view host) {
    if (host.starts_with('[')) {
        host.remove_prefix(1);
        return host.substr(0, host.find(']'));
    }
    return std::count(host.begin(), host.end(), ':') > 1 ? std::optional(host) : std::nullopt;
}

/// A host as the table keeps it: what a URL with this host would call it, without a final dot.
std::string tableKey(std::string_view host) {
    std::string key(host);
    if (const auto address = addressIn(host)) {
        key = *address;
    } else if (const auto url = URL::parse("https://" + key)) {
        key = url->host();
    }
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
    const std::map<std::string, ServerTrustPolicy>& policies) {
    for (const auto& [host, policy] : policies) {
        _policies.insert_or_assign(tableKey(host), policy);
    }
}

const ServerTrustPolicy* ServerTrustPolicyManager::policyForHost(std::string_view host) const {
    const auto found = _policies.find(tableKey(host));
    return found == _policies.end() ? nullptr : &found->second;
}

} // namespace KeloAPI
