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

bool isThisMachine(const std::string& host) {
    const auto url = URL::parse("https://" + host);
    const std::string name = url ? url->host() : "";
    return name == "localhost" || name == "::1" ||
           (name.starts_with("127.") && name.find_first_not_of("0123456789.") == name.npos);
}

// Where `kelo serve` keeps the certificate that it makes for itself.
std::string servedCertificate() {
    const char* state = std::getenv("XDG_STATE_HOME");
    const char* home = std::getenv("HOME");
    const std::string folder =
        state && *state == '/' ? state : std::string(home ? home : "") + "/.local/state";
    return folder + "/kelo-service/certificate.pem";
}

// The library reads no pins from files: it is handed the certificate that the service must have.
bool pinCertificate(const std::string& host) {
    const char* pin = std::getenv("KELO_PIN");
    if (!pin && !isThisMachine(host)) {
        return true; // pinned are the certificates that are built in
    }
    const std::string path = pin ? pin : servedCertificate();
    std::ifstream file(path);
    const std::string pem(std::istreambuf_iterator<char>(file), {});
    const auto certificate = Certificate::fromPEM(pem);
    if (certificate) {
        const ServerTrustPolicyManager trust({{host, PinCertificates{{*certificate}}}});
        Api::session(SessionType::Authenticated)
            ->setSessionManager(std::make_shared<Manager>(trust));
    } else if (pin) {
        std::cerr << "KELO_PIN: no certificate can be read from " << path << '\n';
    }
    return certificate || !pin;
}

int main(int argc, char** argv) {
    const auto host = std::make_shared<Host>();
    if (argc > 1) {
        host->service = argv[1];
    }
    Api::setSessionDelegate(host); // this keeps it; sessions hold their delegate weakly
    if (!pinCertificate(host->service)) {
        return 1;
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
