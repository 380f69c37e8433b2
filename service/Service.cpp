#include "service/Service.hpp"

#include "service/routes/Routes.hpp"

namespace KeloService {

Service::Service(const Settings& settings)
    : store_(settings.database)
    , server_(settings.address, settings.port,
              makeServerContext(settings.certificate, settings.key), router_, log_, faults_)
    , context_{store_,
               log_,
               faults_,
               [this] { return server_.counts(); },
               server_.mediaRate(),
               server_.uploadRate(),
               uploadTimes_,
               "https://localhost:" + std::to_string(server_.port())} {
    server_.mediaRate().set(settings.mediaRate);
    server_.uploadRate().set(settings.uploadRate);
    uploadTimes_.expirySeconds = settings.uploadExpirySeconds;
    uploadTimes_.processingSeconds = settings.processingSeconds;
    for (const auto& [username, key] : settings.sessions) {
        const auto user = store_.users.findByName(username);
        if (!user) {
            throw SettingsError("--session names a user that does not exist: " + username);
        }
        store_.sessions.add(user->userId, key);
    }
    if (!settings.faults.empty()) {
        faults_.addFile(settings.faults);
    }
    addAllRoutes(router_, context_);
}

} // namespace KeloService
