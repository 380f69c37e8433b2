#include "service/Options.hpp"
#include "service/seed/Seed.hpp"
#include "service/Service.hpp"

#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>

namespace {

constexpr int failure = 2;

std::string ownFile() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

/// Blocks the signals that end the program in this thread and those it starts, so that they can be
/// waited for. Returns them.
sigset_t blockSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    return signals;
}

void endWithParent(pid_t parent) {
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != parent) {
        raise(SIGTERM);
    }
}

void printStart(const KeloService::Service& service, bool quiet) {
    std::printf("kelo-service: listening on %s\n", service.url().c_str());
    if (!quiet) {
        const std::string user(KeloService::developmentUser);
        const std::string key(KeloService::developmentSessionKey);
        const std::string password(KeloService::developmentPassword);
        std::printf("The user %s is signed in with the session key %s (password: %s).\n"
                    "Try: curl --insecure -H 'kelo-session-id: %s' %s/users/me\n"
                    "Stop with Ctrl-C.\n",
                    user.c_str(), key.c_str(), password.c_str(), key.c_str(),
                    service.url().c_str());
    }
    std::fflush(stdout);
}

int run(int argc, char** argv) {
    const pid_t parent = getppid();
    const KeloService::Options options = KeloService::parseOptions(argc, argv, ownFile());
    if (options.information) {
        std::fputs(options.information->c_str(), stdout);
        return 0;
    }
    const sigset_t signals = blockSignals();
    if (options.exitWithParent) {
        endWithParent(parent);
    }
    KeloService::Service service(options.settings);
    service.start();
    printStart(service, options.quiet);
    int signal = 0;
    sigwait(&signals, &signal);
    service.stop();
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kelo-service: %s\n", error.what());
        return failure;
    }
}
