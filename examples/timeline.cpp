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

// The library reads no files: it is handed the certificate that the service must have. `kelo serve`
// makes one for itself and says where it is.
void pinCertificate(const std::string& host) {
    const char* pin = std::getenv("KELO_PIN");
    const char* home = std::getenv("HOME");
    const std::string state = std::string(home ? home : "") + "/.local/state/kelo-service";
    std::ifstream file(pin ? pin : state + "/certificate.pem");
    const std::string pem(std::istreambuf_iterator<char>(file), {});
    if (const auto certificate = Certificate::fromPEM(pem)) {
        const ServerTrustPolicyManager trust({{host, PinCertificates{{*certificate}}}});
        Api::session(SessionType::Authenticated)
            ->setSessionManager(std::make_shared<Manager>(trust));
    }
}

int main(int argc, char** argv) {
    const auto host = std::make_shared<Host>();
    if (argc > 1) {
        host->service = argv[1];
    }
    Api::setSessionDelegate(host); // this keeps it; sessions hold their delegate weakly
    pinCertificate(host->service);

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
