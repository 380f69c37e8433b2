// Sends its calls to a service of the caller's choice and accepts that service's certificate alone.
//
//     example-own-service HOST CERTIFICATE.pem
#include <KeloAPI/KeloAPI.hpp>

#include <fstream>
#include <iostream>
#include <iterator>

using namespace KeloAPI;

namespace {

/// The host of this deployment, and who the user is.
class Staging final : public BasicSessionDelegate {
public:
    explicit Staging(std::string host)
        : _host(std::move(host)) {}

    std::optional<std::string> hostForSession(Session&) override { return _host; }
    std::optional<std::string> sessionKeyForSession(Session&) override {
        return "kelo-development-session";
    }
    std::optional<std::string> keloClientForSession(Session&) override { return "linux/1.0"; }

private:
    const std::string _host;
};

/// Every session connects through a manager of its own, and each of them needs the pins.
bool useService(const std::string& host, const std::string& certificateFile) {
    std::ifstream file(certificateFile);
    const std::string pem(std::istreambuf_iterator<char>(file), {});
    const auto certificate = Certificate::fromPEM(pem);
    if (!certificate) {
        return false;
    }
    Api::setSessionDelegate(std::make_shared<Staging>(host));
    const ServerTrustPolicyManager trust({{host, PinCertificates{{*certificate}}}});
    for (const SessionType type : {SessionType::Authenticated, SessionType::UnAuthenticated}) {
        Api::session(type)->setSessionManager(std::make_shared<Manager>(trust));
    }
    return true;
}

} // namespace

int main(int argc, char** argv) {
    Diagnostics::setSink([](std::string_view line) { std::clog << line << '\n'; });
    if (argc != 3 || !useService(argv[1], argv[2])) {
        std::cerr << "example-own-service HOST CERTIFICATE.pem\n";
        return 2;
    }
    int exitCode = 0;
    MeEndpoint::create()->get([&exitCode](const MeResult& result) {
        if (const auto* me = result.success()) {
            std::cout << "Signed in as " << me->user->username.value_or("?") << '\n';
        } else {
            const bool isForeign = isHTTPError(*result.error(), HTTPErrorCode::ServerTrust);
            std::cerr << (isForeign ? "This is not the service that was expected."
                                    : result.error()->localizedDescription())
                      << '\n';
            exitCode = 1;
        }
        MainQueue::main().stop();
    });
    MainQueue::main().run();
    return exitCode;
}
