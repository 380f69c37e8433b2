#pragma once

#include <csignal>

namespace KeloAPI {

/// Keeps the host's signals away from threads that are started while it lives: its handlers should
/// run on its own threads. Faults stay deliverable, for whoever reports crashes.
class SignalShield {
public:
    SignalShield() {
        sigset_t blocked;
        sigfillset(&blocked);
        for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS}) {
            sigdelset(&blocked, fault);
        }
        pthread_sigmask(SIG_BLOCK, &blocked, &_before);
    }
    SignalShield(const SignalShield&) = delete;
    SignalShield& operator=(const SignalShield&) = delete;
    ~SignalShield() { pthread_sigmask(SIG_SETMASK, &_before, nullptr); }

private:
    sigset_t _before{};
};

} // namespace KeloAPI
