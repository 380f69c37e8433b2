#include "service/Options.hpp"
#include "service/seed/Seed.hpp"
#include "service/Service.hpp"

#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>
#include <exception>
#include <filesystem>
#include <iostream>
#include <string>
#include <string_view>

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
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &ignore, nullptr);
    return signals;
}

void endWithParent(pid_t parent) {
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != parent) {
        kill(getpid(), SIGTERM);
    }
}

void printStart(const KeloService::Service& service, bool quiet) {
    const std::string_view key = KeloService::developmentSessionKey;
    std::cout << "kelo-service: listening on " << service.url() << '\n';
    if (!quiet) {
        std::cout << "The user " << KeloService::developmentUser
                  << " is signed in with the session key " << key
                  << " (password: " << KeloService::developmentPassword << ").\n"
                  << "Try: curl --insecure -H 'kelo-session-id: " << key << "' " << service.url()
                  << "/users/me\nStop with Ctrl-C.\n";
    }
    std::cout.flush();
}

int run(int argc, char** argv) {
    const pid_t parent = getppid();
    const KeloService::Options options = KeloService::parseOptions(argc, argv, ownFile());
    if (options.information) {
        std::cout << *options.information;
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
        std::cerr << "kelo-service: " << error.what() << '\n';
        return failure;
    }
}
