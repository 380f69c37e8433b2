// A manager with limits of its own: shorter time-outs, and calls that are sent again after passing
// failures; and a call that the user may cancel.
//
//     example-limits [cancel]
#include "ExampleHost.hpp"

#include <chrono>
#include <iostream>

using namespace KeloAPI;
using namespace std::chrono_literals;

namespace {

TransportSettings impatientSettings() {
    TransportSettings settings;
    settings.connectTimeout = 5s;
    settings.silenceTimeout = 1s;
    settings.responseTimeout = 20s;
    settings.retries.maxRetries = 2;
    settings.retries.firstPause = 100ms;
    return settings;
}

std::string told(const Error& error) {
    if (isHTTPError(error, HTTPErrorCode::TimedOut)) {
        return "The service is not answering.";
    }
    if (isHTTPError(error, HTTPErrorCode::Cancelled)) {
        return "Cancelled.";
    }
    return error.localizedDescription();
}

} // namespace

int main(int argc, char**) {
    ExampleHost::use();
    ExampleHost::useManager(impatientSettings());
    const auto sounds = SoundboardEndpoint::create(Api::session(SessionType::UnAuthenticated));
    const auto request =
        sounds->fetchSounds([](const std::vector<std::shared_ptr<SoundboardSound>>& list,
                               const std::optional<Error>& error) {
            std::cout << (error ? told(*error) : std::to_string(list.size()) + " sounds") << '\n';
            MainQueue::main().stop();
        });
    if (argc > 1) {
        request->cancel(); // the completion hears of it
    }
    MainQueue::main().run();
    return 0;
}
