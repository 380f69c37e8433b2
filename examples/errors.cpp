// What a host may say to its user for each kind of error, from the domain and the code alone; and
// the one line that it keeps for the people who debug.
#include "ExampleHost.hpp"

#include <iostream>

using namespace KeloAPI;

namespace {

std::string adviceForHTTP(const Error& error) {
    switch (static_cast<HTTPErrorCode>(error.code())) {
    case HTTPErrorCode::Cancelled:
        return ""; // the user knows
    case HTTPErrorCode::TimedOut:
    case HTTPErrorCode::CannotFindHost:
    case HTTPErrorCode::CannotConnect:
    case HTTPErrorCode::ConnectionLost:
        return "Check your connection and try again.";
    case HTTPErrorCode::ServerTrust:
        return "This network is not safe.";
    case HTTPErrorCode::CannotWriteFile:
        return "Make room on this device.";
    default:
        return "Something went wrong. Try again later.";
    }
}

std::string advice(const Error& error) {
    if (error.domain() == HTTPErrorDomain) {
        return adviceForHTTP(error);
    }
    // The service's own errors bring a status code and a text for the user.
    if (const auto status = error.integer(KLAPIStatusCodeKey)) {
        const bool wantsSignIn = status == 100 || status == 103;
        return wantsSignIn ? "Sign in again." : error.localizedDescription();
    }
    // What is left are responses that could not be read.
    return "Something went wrong. Try again later.";
}

} // namespace

int main() {
    ExampleHost::use();
    MeEndpoint::create()->get([](const MeResult& result) {
        if (const Error* error = result.error()) {
            std::cout << advice(*error) << '\n';
            std::cerr << error->description() << '\n';
        } else {
            std::cout << "Signed in\n";
        }
        MainQueue::main().stop();
    });
    MainQueue::main().run();
    return 0;
}
