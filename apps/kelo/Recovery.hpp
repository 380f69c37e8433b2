#pragma once

#include <KeloAPI/api/Session.hpp>
#include <KeloAPI/base/Error.hpp>
#include <KeloAPI/base/URL.hpp>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace KeloHost {

class Host;

/// What the program does when the service wants the user to sign in again or to solve a captcha.
/// Either way a call has failed and a retry of it waits in its session:
///  1. The library tells the host, before it calls the failed call's completion. Asking the user
///     takes long, so it is only noted here and put off to a task of its own.
///  2. The completion hears of the failure, asks `willRetry` and does nothing.
///  3. The task asks the user and releases the session's queue: `handleQueuedRetries(true)` sends
///     the call again, and its completion is called a second time. If the user gives up,
///     `handleQueuedRetries(false)` drops it and the program ends.
class Recovery {
public:
    explicit Recovery(Host& host)
        : _host(host) {}

    void reauthRequired(KeloAPI::Session& session);
    /// Whether the user can be asked at all.
    bool captchaRequired(KeloAPI::Session& session, const KeloAPI::URL& captchaUrl);

    /// A call succeeded: what was tried to sign in does not count any more.
    void sessionWorks() { _attempts = 0; }

    /// True when the call that failed so waits for the user.
    bool willRetry(const KeloAPI::Error& error);

    /// Signs the user in, then calls `next`.
    void signIn(std::function<void()> next);

private:
    struct Credentials {
        std::string user;
        std::string password;
    };

    bool canAsk() const;
    /// Lets the calls that were refused be sent again with the session that is new already.
    void releaseSoon();
    void tryToSignIn();
    void giveUp();
    /// What to sign in with next; absent when there is nothing left to try.
    std::optional<Credentials> credentials();
    void signInFailed(const KeloAPI::Error& error);
    void askForCaptcha(KeloAPI::SessionType type, const KeloAPI::URL& captchaUrl);

    Host& _host;
    bool _waitsForSignIn = false;
    bool _waitsForRelease = false;
    /// Calls under way that still carry the session key from before the user signed in.
    std::int64_t _stragglers = 0;
    bool _waitsForCaptcha = false;
    int _attempts = 0;
    /// What the service said when it refused the session.
    std::string _reason;
    std::function<void()> _afterSignIn;
};

} // namespace KeloHost
