#include "Failure.hpp"

#include "Pins.hpp"

namespace KeloHost {

using namespace KeloAPI;

namespace {

std::string transportProblem(const Error& error, const std::string& host,
                             const std::string& expectedPins) {
    switch (static_cast<HTTPErrorCode>(error.code())) {
    case HTTPErrorCode::CannotFindHost:
        return "there is no host named " + host;
    case HTTPErrorCode::CannotConnect:
        return "cannot connect to " + host +
               (isThisMachine(host) ? " – is the service running? (kelo serve)" : "");
    case HTTPErrorCode::TimedOut:
        return host + " does not respond";
    case HTTPErrorCode::ConnectionLost:
        return "the connection to " + host + " broke off";
    case HTTPErrorCode::ServerTrust:
        return "the server at " + host + " cannot prove that it is the service; " + expectedPins +
               "; name the service's own with --pin FILE";
    case HTTPErrorCode::BadServerResponse:
    case HTTPErrorCode::BadJson:
    case HTTPErrorCode::EmptyBody:
        return host + " sent an invalid response";
    case HTTPErrorCode::HTTPStatus:
        return host + " responded with the status " +
               std::to_string(error.integer(HTTPStatusCodeKey).value_or(0));
    case HTTPErrorCode::CannotWriteFile:
        return error.localizedDescription() +
               (error.underlying() ? ": " + error.underlying()->localizedDescription() : "");
    default:
        return host + ": " + error.localizedDescription();
    }
}

Failure serviceProblem(const Error& error, std::int64_t code) {
    const auto captchaUrl = error.url(KLCaptchaUrlKey);
    const std::string where = captchaUrl ? " at " + captchaUrl->absoluteString() : "";
    switch (code) {
    case 100:
    case 103:
        return {ExitCode::SignIn, error.localizedDescription()};
    case 419:
        return {ExitCode::SignIn, "the service asks for a captcha" + where};
    default:
        return {ExitCode::Failed, "the service says: " + error.localizedDescription()};
    }
}

} // namespace

Failure explained(const Error& error, const std::string& host, const std::string& expectedPins) {
    if (error.domain() == HTTPErrorDomain) {
        return {ExitCode::Failed, transportProblem(error, host, expectedPins)};
    }
    if (const auto code = error.integer(KLAPIStatusCodeKey)) {
        return serviceProblem(error, *code);
    }
    return {ExitCode::Failed,
            host + " sent an invalid response (" + error.localizedDescription() + ")"};
}

} // namespace KeloHost
