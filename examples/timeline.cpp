// Prints the captions of a feed's first page.
#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/endpoints/TimelineEndpoint.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/queues/MainQueue.hpp>

#include <iostream>

using namespace KeloAPI;

// What the library asks its host: where the service is, and who the user is.
struct Host final : SessionDelegate {
    using Text = std::optional<std::string>;
    std::string service = "localhost:8443"; // kelo serve

    Text hostForSession(Session&) override { return service; }
    Text schemaForSession(Session&) override { return {}; }
    Text sessionKeyForSession(Session&) override { return "kelo-development-session"; }
    Text acceptLanguageForSession(Session&) override { return {}; }
    Text userAgentForSession(Session&) override { return {}; }
    Text keloClientForSession(Session&) override { return {}; }
    bool isPollingForSession(Session&) override { return false; }
    void reauthRequiredForSession(Session&) override {}
    bool shouldHandleCaptchaForSession(Session&, const URL&) override { return false; }
};

int main(int argc, char** argv) {
    const auto host = std::make_shared<Host>();
    if (argc > 1) {
        host->service = argv[1];
    }
    Api::setSessionDelegate(host);

    int exitCode = 0;
    TimelineEndpoint::create("popular")->fetch([&exitCode](const TimelineResult& result) {
        if (const auto* page = result.success()) {
            for (const auto& post : page->posts) {
                std::cout << post->caption.value_or("") << '\n';
            }
        } else {
            std::cerr << result.error()->localizedDescription() << '\n';
            exitCode = 1;
        }
        MainQueue::main().stop();
    });
    MainQueue::main().run();
    return exitCode;
}
