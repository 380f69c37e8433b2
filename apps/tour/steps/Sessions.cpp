#include "Calls.hpp"
#include "Control.hpp"
#include "Steps.hpp"
#include "TourHost.hpp"

#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>

namespace KeloTour {

using namespace KeloAPI;

namespace {

/// Signs theo.loops in as the service's sign-in page would; returns the session key.
std::string signIn() {
    const auto endpoint = Endpoint::create(Api::session(SessionType::UnAuthenticated));
    endpoint->setPath("sessions");
    endpoint->setMethod(Method::POST);
    endpoint->setParameterEncoding(ParameterEncoding::JSON);
    endpoint->setParameters({{"username", "theo.loops"}, {"password", "loop-the-loop"}});
    sent(endpoint->URLRequest().description() + " with the user's name and password");
    const auto document = JsonDocument::parse(readText(endpoint));
    check(static_cast<bool>(document), "signing in brought no JSON");
    const auto data = (*document.value().root().object())["data"].object();
    check(data && (*data)["key"].text(), "signing in brought no session key");
    came("a new session key");
    return std::string(*(*data)["key"].text());
}

/// Runs a step as theo.loops, in a session of the step's own.
void asTheo(const std::function<void(TourHost& host)>& step) {
    TourHost& host = TourHost::instance();
    const auto key = host.sessionKey;
    host.sessionKey = Control::addSession("theo.loops");
    host.timesAskedToSignIn = 0;
    host.captchaUrls.clear();
    try {
        step(host);
    } catch (...) {
        host.sessionKey = key;
        throw;
    }
    host.sessionKey = key;
}

std::size_t waitingRetries() {
    return Api::session(SessionType::Authenticated)->queuedRetryCount();
}

void release(bool shouldRetry) {
    Api::session(SessionType::Authenticated)->handleQueuedRetries(shouldRetry);
}

void expiredSession(TourHost& host) {
    Control::expireSession(*host.sessionKey);
    Inbox<MeResult> inbox;
    sendMe(inbox);
    const Error refusal = errorIn(inbox.next());
    came("code " + std::to_string(refusal.code()) + ": " + refusal.localizedDescription());
    check(refusal.code() == 103, "that is another code");
    check(host.timesAskedToSignIn == 1, "the host was not told to sign in again");
    check(waitingRetries() == 1, "no retry waits");
    note("the host was told, and one retry waits in the session");
    host.sessionKey = signIn();
    release(true);
    const std::string name = nameIn(inbox.next());
    came("the same completion is called again: the user " + name);
    check(name == "theo.loops" && waitingRetries() == 0, "that is not what was asked for");
}

void givenUp(TourHost& host) {
    Control::expireSession(*host.sessionKey);
    Inbox<MeResult> inbox;
    sendMe(inbox);
    errorIn(inbox.next());
    check(waitingRetries() == 1, "no retry waits");
    release(false);
    check(waitingRetries() == 0 && inbox.staysEmpty(), "the retry was sent all the same");
    came("the host gave up: the retry is dropped, and the completion is not called again");
}

void captcha(TourHost& host) {
    Control::demandCaptcha(*host.sessionKey);
    host.handlesCaptcha = true;
    Inbox<MeResult> inbox;
    sendMe(inbox);
    const Error refusal = errorIn(inbox.next());
    host.handlesCaptcha = false;
    came("code " + std::to_string(refusal.code()) + ": " + refusal.localizedDescription());
    check(refusal.code() == 419 && host.captchaUrls.size() == 1, "the host was not asked");
    const std::string url = host.captchaUrls.front().absoluteString();
    came("to be solved at " + url);
    sent("POST " + url + "/solve");
    const auto solution = Endpoint::create(Api::session(SessionType::UnAuthenticated));
    solution->setPath(url + "/solve"); // a path may be a complete URL
    solution->setMethod(Method::POST);
    came(readText(solution));
    release(true);
    const std::string name = nameIn(inbox.next());
    came("the same completion is called again: the user " + name);
    check(name == "theo.loops", "that is not what was asked for");
}

void captchaRefused(TourHost& host) {
    Control::demandCaptcha(*host.sessionKey);
    Inbox<MeResult> inbox;
    sendMe(inbox);
    check(errorIn(inbox.next()).code() == 419, "that is another code");
    check(host.captchaUrls.size() == 1 && waitingRetries() == 0, "a retry waits");
    came("code 419; the host does not want to, and no retry waits");
}

} // namespace

void tourSessions(Tour& tour) {
    tour.step("An expired session: the host signs in again, the call is repeated",
              [] { asTheo(expiredSession); });
    tour.step("An expired session: the host gives up", [] { asTheo(givenUp); });
    tour.step("A captcha: the host has it solved, the call is repeated", [] { asTheo(captcha); });
    tour.step("A captcha that the host does not want to handle", [] { asTheo(captchaRefused); });
}

} // namespace KeloTour
