#include "commands/Commands.hpp"
#include "KeptSession.hpp"

namespace KeloHost {

void login(const HostPointer& host, const Arguments& /*arguments*/) {
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
