#include "commands/Commands.hpp"
#include "KeptSession.hpp"
#include "Terminal.hpp"

#include <cstdlib>

namespace KeloHost {

void login(const HostPointer& host, const Arguments& /*arguments*/) {
    if (std::getenv("KELO_SESSION") != nullptr) {
        Terminal::say("kelo: KELO_SESSION is set, and goes before the session that login keeps");
    }
    host->keepSignedIn();
}

void logout(const HostPointer& host, const Arguments& /*arguments*/) {
    const auto service = serviceAt(host->options().host);
    if (!forgetSession(service)) {
        throw Failure(ExitCode::Failed, "no session is kept for " + host->options().host);
    }
    host->showDone("signed out of", host->options().host);
}

} // namespace KeloHost
