// Prints the captions of a feed's first page.
#include "ExampleHost.hpp"

#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/endpoints/TimelineEndpoint.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/platform/Diagnostics.hpp>
#include <KeloAPI/platform/MainQueue.hpp>

#include <iostream>

using namespace KeloAPI;

namespace {

int exitCode = 0;

void fail(const Error& error) {
    std::cerr << error.localizedDescription() << '\n';
    exitCode = 1;
}

} // namespace

int main() {
    Diagnostics::setSink([](std::string_view line) { std::clog << line << '\n'; });
    // [timeline]
    Api::setSessionDelegate(
        std::make_shared<ExampleHost>()); // where the service is, who the user is
    TimelineEndpoint::create("popular")->fetch([](const TimelineResult& result) {
        if (const auto* page = result.success()) {
            for (const auto& post : page->posts)
                std::cout << post->caption.value_or("") << '\n';
        } else {
            fail(*result.error());
        }
        MainQueue::main().stop();
    });
    MainQueue::main().run();
    // [timeline]
    return exitCode;
}
