// Prints the captions of a feed's first page, from the service that `kelo serve` runs.
#include <KeloAPI/KeloAPI.hpp>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>

using namespace KeloAPI;

// What the library asks its host; BasicSessionDelegate leaves the rest unsaid.
struct Host final : BasicSessionDelegate {
    std::string service = "localhost:8443"; // kelo serve

    std::optional<std::string> hostForSession(Session&) override { return service; }
};

// What `kelo serve` made for itself. A host that knows its service's certificate builds it in.
std::optional<Certificate> servedCertificate() {
    const char* state = std::getenv("XDG_STATE_HOME");
    const char* home = std::getenv("HOME");
    const std::string folder =
        state && *state == '/' ? state : std::string(home ? home : "") + "/.local/state";
    std::ifstream file(folder + "/kelo-service/certificate.pem");
    const std::string pem(std::istreambuf_iterator<char>(file), {});
    return Certificate::fromPEM(pem);
}

int main(int argc, char** argv) {
    const auto host = std::make_shared<Host>();
    if (argc > 1) {
        host->service = argv[1];
    }
    Api::setSessionDelegate(host); // this keeps it; sessions hold their delegate weakly
    if (const auto certificate = servedCertificate()) {
        const ServerTrustPolicyManager trust({{host->service, PinCertificates{{*certificate}}}});
        Api::session(SessionType::Authenticated)
            ->setSessionManager(std::make_shared<Manager>(trust)); // no other server will do
    }

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
