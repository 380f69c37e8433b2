#pragma once

#include <KeloAPI/json/Parameters.hpp>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

/// What kelo-service offers beside the service itself, under /_service: the tour makes its sessions
/// expire and its answers go wrong. Sent through the library, as text.
namespace KeloTour::Control {

/// A new session of that user; returns its key.
std::string addSession(const std::string& username);
void expireSession(const std::string& key);
void demandCaptcha(const std::string& key);

/// Makes the next request for `path` fail as `action` says.
void addFault(const std::string& path, KeloAPI::Parameters action);
/// True when every fault that was added since the last call really happened; forgets them.
bool allFaultsHappened();

/// A request as the service received it.
struct Received {
    std::string method;
    std::string path;
    /// Without its "?"; empty when there was none.
    std::string query;
    std::map<std::string, std::string> headers;
    /// Without its framing.
    std::string body;
};

/// The number of the request that the service received last.
std::int64_t lastRequest();
/// What the service received after that one, oldest first.
std::vector<Received> requestsSince(std::int64_t number);

/// The one request that `act` makes the service receive; tells its method, path, query and body.
/// Any other number of requests fails the step.
Received received(const std::function<void()>& act);

/// What users did since the service was seeded, as it keeps it, oldest first: "likes", "reposts",
/// "follows", "feedback", "loops" or "views", each entry's values as texts.
std::vector<std::map<std::string, std::string>> kept(const std::string& kind);

/// How many connections the service has accepted so far.
std::int64_t acceptedConnections();

} // namespace KeloTour::Control
