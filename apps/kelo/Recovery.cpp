#include "Recovery.hpp"

#include "Host.hpp"
#include "Terminal.hpp"

#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPI/api/ResponseEnvelope.hpp>
#include <KeloAPI/parsing/KLClosureParser.hpp>
#include <KeloAPI/queues/MainQueue.hpp>

#include <utility>

namespace KeloHost {

using namespace KeloAPI;

namespace {

constexpr int mostAttempts = 3;

/// What the service answers to a user who signs in.
struct SignedIn {
    std::string key;
};

std::shared_ptr<SignedIn> signedInFrom(const JsonObject& json) {
    const auto key = json["key"].text();
    if (!key || !json["username"].text()) {
        throw JsonParseError(JsonParseError::InsufficientData);
    }
    return std::make_shared<SignedIn>(SignedIn{std::string(*key)});
}

void releaseRetries(SessionType type, bool shouldRetry) {
    Api::session(type)->handleQueuedRetries(shouldRetry);
}

} // namespace

void Recovery::reauthRequired(Session& session) {
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
            _stragglers = _host.callsUnderWay();
            releaseRetries(SessionType::Authenticated, true);
        });
    });
}

void Recovery::releaseSoon() {
    if (std::exchange(_waitsForRelease, true)) {
        return;
    }
    MainQueue::main().async([this] {
        _waitsForRelease = false;
        releaseRetries(SessionType::Authenticated, true);
    });
}

bool Recovery::captchaRequired(Session& session, const URL& captchaUrl) {
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

bool Recovery::willRetry(const Error& error) {
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

bool Recovery::canAsk() const {
    return !_host.options().noInput && Terminal::isInteractive();
}

void Recovery::signIn(std::function<void()> next) {
    _afterSignIn = std::move(next);
    if (!_reason.empty() && canAsk()) {
        Terminal::say(_reason + ".");
    }
    tryToSignIn();
}

void Recovery::tryToSignIn() {
    const auto given = credentials();
    if (!given) {
        giveUp();
        return;
    }
    // The library leaves this call to the host; this is how a host adds calls of its own to it.
    const auto endpoint = Endpoint::create(Api::session(SessionType::UnAuthenticated));
    endpoint->setPath("sessions");
    endpoint->setMethod(Method::POST);
    endpoint->setParameterEncoding(ParameterEncoding::JSON);
    endpoint->setParameters({{"username", given->user}, {"password", given->password}});
    endpoint->request(std::make_shared<KLClosureParser<SignedIn>>(signedInFrom),
                      [this](const std::vector<std::shared_ptr<SignedIn>>& sessions, const auto&,
                             const auto&, const std::optional<Error>& error) {
                          if (error) {
                              signInFailed(*error);
                          } else if (sessions.empty()) {
                              signInFailed(
                                  Error::withMessage("kelo", 1, "the service gave no session"));
                          } else {
                              _host.setSessionKey(sessions.front()->key);
                              std::exchange(_afterSignIn, nullptr)();
                          }
                      });
}

void Recovery::giveUp() {
    std::string line = _reason.empty() ? "nobody is signed in" : _reason;
    if (_host.options().user.empty()) {
        line += " (give --user and --password, or another --session)";
    }
    releaseRetries(SessionType::Authenticated, false);
    _host.end(Failure(ExitCode::SignIn, line));
}

std::optional<Recovery::Credentials> Recovery::credentials() {
    const Options& options = _host.options();
    const bool complete = !options.user.empty() && !options.password.empty();
    // What stands on the command line is tried once: it does not get better.
    if (++_attempts > (complete ? 1 : mostAttempts)) {
        return std::nullopt;
    }
    if (complete) {
        return Credentials{options.user, options.password};
    }
    if (!canAsk()) {
        return std::nullopt;
    }
    const auto user = options.user.empty() ? Terminal::ask("User name (empty to give up): ")
                                           : std::optional(options.user);
    if (!user || user->empty()) {
        return std::nullopt;
    }
    const auto password = Terminal::askHidden("Password of " + *user + ": ");
    return password ? std::optional(Credentials{*user, *password}) : std::nullopt;
}

void Recovery::signInFailed(const Error& error) {
    const auto code = error.integer(KLAPIStatusCodeKey);
    if (code == 419 && _waitsForCaptcha) {
        return; // signing in waits for a captcha itself
    }
    if (!code) {
        releaseRetries(SessionType::Authenticated, false);
        _host.fail(error);
        return;
    }
    _reason = error.localizedDescription();
    if (canAsk()) {
        Terminal::say(_reason + ".");
    }
    tryToSignIn();
}

void Recovery::askForCaptcha(SessionType type, const URL& captchaUrl) {
    Terminal::say("The service wants to see that you are human. Solve the captcha at");
    Terminal::say("  " + captchaUrl.absoluteString());
    const auto answer = Terminal::ask("Then press Enter (q gives up): ");
    const bool solved = answer && *answer != "q";
    _waitsForCaptcha = false;
    releaseRetries(type, solved);
    if (!solved) {
        _host.end(Failure(ExitCode::SignIn, "the captcha was not solved"));
    }
}

} // namespace KeloHost
