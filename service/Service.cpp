#include "service/Service.hpp"

#include "service/routes/Guard.hpp"
#include "service/routes/Routes.hpp"

#include <stdexcept>

namespace KeloService {

Service::Service(const Settings& settings)
    : database_(settings.database)
    , uploadFolder_(settings.database)
    , uploadTimes_{settings.uploadExpirySeconds, settings.processingSeconds}
    , server_(settings.address, settings.port,
              makeServerContext(settings.certificate, settings.key), router_)
    , context_{database_, uploadFolder_, server_, uploadTimes_,
               "https://localhost:" + std::to_string(server_.port())} {
    server_.mediaRate() = settings.mediaRate;
    server_.uploadRate() = settings.uploadRate;
    for (const auto& [username, key] : settings.sessions) {
        const auto userId = findUser(database_, username);
        if (!userId) {
            throw std::runtime_error("--session names a user that does not exist: " + username);
        }
        addSession(database_, *userId, key);
    }
    if (!settings.faults.empty()) {
        server_.faults().addFile(settings.faults);
    }
    addAllRoutes(router_, context_);
}

} // namespace KeloService
