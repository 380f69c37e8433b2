#include "Host.hpp"
#include "Terminal.hpp"
#include "Text.hpp"

#include <utility>

// What the host does when the service wants the user to sign in again or to solve a captcha.
// Either way a call has failed and a retry of it waits in its session:
//  1. The library tells the host, before it calls the failed call's completion. Asking the user
//     takes long, so it is only noted here and put off to a task of its own.
//  2. The completion hears of the failure, asks `hearsAgain` and does nothing.
//  3. The task asks the user and releases the session's queue: `handleQueuedRetries(true)` sends
//     the call again, and its completion is called a second time. If the user gives up,
//     `handleQueuedRetries(false)` drops it and the program ends.
namespace KeloHost {

using namespace KeloAPI;

namespace {

constexpr int mostAttempts = 3;

/// The session that the service gives a user who signs in.
std::shared_ptr<KeptSession> sessionIn(const JsonObject& json) {
    const auto key = json["key"].text();
    const auto user = json["username"].text();
    if (!key || !fitsHeader(*key) || !user) {
        throw JsonParseError(JsonParseError::InsufficientData);
    }
    return std::make_shared<KeptSession>(KeptSession{std::string(*user), std::string(*key)});
}

void releaseRetries(SessionType type, bool shouldRetry) {
    Api::session(type)->handleQueuedRetries(shouldRetry);
}

} // namespace

void Host::reauthRequiredForSession(Session& session) {
    if (session.sessionType() != SessionType::Authenticated) {
        // Nobody is signed in there. The session still holds the retry, and is in the middle of
        // queueing it.
        MainQueue::main().async([type = session.sessionType()] { releaseRetries(type, false); });
        return;
    }
    if (_waitsForSignIn) {
        return; // several calls may fail together; all of their retries wait in the session
    }
    if (_stragglers > 0) {
        --_stragglers;
        releaseSoon();
        return;
    }
    _waitsForSignIn = true;
    MainQueue::main().async([this] {
        signIn([this] {
            _waitsForSignIn = false;
            _stragglers = callsUnderWay();
            releaseRetries(SessionType::Authenticated, true);
        });
    });
}

void Host::releaseSoon() {
    if (std::exchange(_waitsForRelease, true)) {
        return;
    }
    MainQueue::main().async([this] {
        _waitsForRelease = false;
        releaseRetries(SessionType::Authenticated, true);
    });
}

bool Host::shouldHandleCaptchaForSession(Session& session, const URL& captchaUrl) {
    if (!canAsk()) {
        return false;
    }
    if (!_waitsForCaptcha) {
        _waitsForCaptcha = true;
        MainQueue::main().async(
            [this, type = session.sessionType(), captchaUrl] { askForCaptcha(type, captchaUrl); });
    }
    return true;
}

bool Host::hearsAgain(const Error& error) {
    const std::int64_t code = error.integer(KLAPIStatusCodeKey).value_or(0);
    if (code == 419) {
        return _waitsForCaptcha;
    }
    const bool signInWanted = code == 100 || code == 103;
    if (signInWanted) {
        _reason = error.localizedDescription();
    }
    return signInWanted && (_waitsForSignIn || _waitsForRelease);
}

bool Host::canAsk() const {
    return !_options.noInput && Terminal::isInteractive();
}

void Host::signIn(std::function<void()> next) {
    _afterSignIn = std::move(next);
    if (!_reason.empty() && canAsk()) {
        Terminal::say(_reason + ".");
    }
    tryToSignIn();
}

void Host::tryToSignIn() {
    const auto given = credentials();
    if (!given) {
        giveUp();
        return;
    }
    // The library has no endpoint for this: a host makes its own.
    const auto endpoint = Endpoint::create(Api::session(SessionType::UnAuthenticated));
    endpoint->setPath("sessions");
    endpoint->setMethod(Method::POST);
    endpoint->setParameterEncoding(ParameterEncoding::JSON);
    endpoint->setParameters({{"username", given->user}, {"password", given->password}});
    endpoint->request(std::make_shared<KLClosureParser<KeptSession>>(sessionIn),
                      [this](const Sessions& sessions, const auto&, const auto&,
                             const std::optional<Error>& error) { signedIn(sessions, error); });
}

void Host::signedIn(const Sessions& sessions, const std::optional<Error>& error) {
    if (error) {
        signInFailed(*error);
        return;
    }
    if (sessions.empty()) {
        signInFailed(Error::withMessage("kelo", 1, "the service sent no session"));
        return;
    }
    _newSession = *sessions.front();
    _options.session = _newSession->key;
    hear(nullptr, [this] {
        if (_options.sessionIsKept) {
            keepSession(serviceAt(_options.host), *_newSession);
        }
        std::exchange(_afterSignIn, nullptr)();
    });
}

void Host::keepSignedIn() {
    _isLogin = true;
    _options.sessionIsKept = true;
    const auto tell = [this] { showDone("signed in as", _newSession->user); };
    if (_newSession) {
        keepSession(serviceAt(_options.host), *_newSession);
        tell();
    } else {
        signIn(tell);
    }
}

void Host::giveUp() {
    const std::string hint = signInHint();
    releaseRetries(SessionType::Authenticated, false);
    end(Failure(ExitCode::SignIn, (_reason.empty() ? "nobody is signed in" : _reason) +
                                      (hint.empty() ? "" : " (" + hint + ")")));
}

std::string Host::signInHint() const {
    const std::string password = "set KELO_PASSWORD, or pipe the password to --password -";
    if (!_options.user.empty()) {
        return _options.password.empty() && !canAsk() ? password : "";
    }
    if (!_isLogin) {
        return "run kelo login, or give --user or another --session";
    }
    return canAsk() ? "" : "give --user, and " + password;
}

std::optional<Host::Credentials> Host::credentials() {
    const bool complete = !_options.user.empty() && !_options.password.empty();
    // A given name and password are tried only once.
    if (++_attempts > (complete ? 1 : mostAttempts)) {
        return std::nullopt;
    }
    if (!complete && !canAsk()) {
        return std::nullopt;
    }
    const auto user = _options.user.empty() ? Terminal::ask("User name (empty to give up): ")
                                            : std::optional(_options.user);
    if (!user || user->empty()) {
        return std::nullopt;
    }
    const auto password = _options.password.empty()
                              ? Terminal::askHidden("Password of " + *user + ": ")
                              : std::optional(_options.password);
    return password ? std::optional(Credentials{*user, *password}) : std::nullopt;
}

void Host::signInFailed(const Error& error) {
    const auto code = error.integer(KLAPIStatusCodeKey);
    if (code == 419 && _waitsForCaptcha) {
        return; // signing in waits for a captcha itself
    }
    if (!code) {
        releaseRetries(SessionType::Authenticated, false);
        fail(error);
        return;
    }
    _reason = error.localizedDescription();
    if (canAsk()) {
        Terminal::say(_reason + ".");
    }
    tryToSignIn();
}

void Host::askForCaptcha(SessionType type, const URL& captchaUrl) {
    Terminal::say("The service wants to see that you are human. Solve the captcha at");
    Terminal::say("  " + captchaUrl.absoluteString());
    const auto answer = Terminal::ask("Then press Enter (q gives up): ");
    const bool solved = answer && *answer != "q";
    _waitsForCaptcha = false;
    releaseRetries(type, solved);
    if (!solved) {
        end(Failure(ExitCode::SignIn, "the captcha was not solved"));
    }
}

} // namespace KeloHost
