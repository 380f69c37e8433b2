#pragma once

#include <KeloAPI/KeloAPI.hpp>

#include <optional>
#include <string>

namespace KeloHost {

/// A session that `kelo login` keeps in the user's data directory: one file, which only the user
/// may read, for each scheme, host and port, so that a key is sent only to where it came from.
struct KeptSession {
    std::string user;
    std::string key;
};

/// Where the service is at HOST or HOST:PORT.
KeloAPI::URL serviceAt(const std::string& host);

// All of these throw a `Failure` where a file cannot be used.

/// The one that is kept for that service; absent when there is none.
std::optional<KeptSession> keptSession(const KeloAPI::URL& service);
void keepSession(const KeloAPI::URL& service, const KeptSession& session);
/// False when there is none.
bool forgetSession(const KeloAPI::URL& service);

} // namespace KeloHost
