// Signs the user in when the service asks for it, shows captchas, and lets the calls that waited
// for either go on.
//
//     example-signing-in USER PASSWORD
#include "ExampleHost.hpp"

#include <iostream>

using namespace KeloAPI;

namespace {

class SigningIn final : public ExampleHost {
public:
    SigningIn(std::string user, std::string password)
        : _user(std::move(user))
        , _password(std::move(password)) {}

    /// An app reads it from its keychain at the start.
    std::optional<std::string> sessionKeyForSession(Session& session) override {
        return _key.empty() ? ExampleHost::sessionKeyForSession(session) : _key;
    }

    /// Called once for each call that was refused: the first starts signing in, the others wait.
    void reauthRequiredForSession(Session&) override {
        if (_isSigningIn) {
            return;
        }
        _isSigningIn = true;
        const auto endpoint = Endpoint::create(Api::session(SessionType::UnAuthenticated));
        endpoint->setPath("sessions");
        endpoint->setMethod(Method::POST);
        endpoint->setParameterEncoding(ParameterEncoding::JSON);
        endpoint->setParameters({{"username", _user}, {"password", _password}});
        endpoint->request(std::make_shared<KLClosureParser<std::string>>(keyIn),
                          [this](const Keys& keys, const std::optional<Metadata>&, const Timeline&,
                                 const std::optional<Error>& error) { signedIn(keys, error); });
    }

    /// An app shows the page. The library waits for no answer: `handleQueuedRetries` is the answer.
    bool shouldHandleCaptchaForSession(Session& session, const URL& captchaUrl) override {
        MainQueue::main().async([&session, captchaUrl] {
            std::cout << "Solve " << captchaUrl.absoluteString() << " and press Enter" << std::endl;
            std::string line;
            const bool isSolved = static_cast<bool>(std::getline(std::cin, line));
            session.handleQueuedRetries(isSolved);
            if (!isSolved) {
                MainQueue::main().stop();
            }
        });
        return true;
    }

private:
    using Keys = std::vector<std::shared_ptr<std::string>>;

    static std::shared_ptr<std::string> keyIn(const JsonObject& json) {
        const auto key = json["key"].text();
        return key ? std::make_shared<std::string>(*key) : nullptr;
    }

    void signedIn(const Keys& keys, const std::optional<Error>& error) {
        _isSigningIn = false;
        if (!error && !keys.empty()) {
            _key = *keys.front();
        } else {
            std::cerr << (error ? error->localizedDescription() : "There was no key.") << '\n';
            MainQueue::main().stop();
        }
        // True sends what waits with the new key, false drops it.
        Api::session(SessionType::Authenticated)->handleQueuedRetries(!_key.empty());
    }

    const std::string _user;
    const std::string _password;
    std::string _key;
    bool _isSigningIn = false;
};

/// Whether the delegate above deals with this error, so that the call's completion is called again.
bool isHeardAgain(const Error& error) {
    const auto code = error.integer(KLAPIStatusCodeKey);
    return code == 100 || code == 103 || code == 419;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "example-signing-in USER PASSWORD\n";
        return 2;
    }
    ExampleHost::use(std::make_shared<SigningIn>(argv[1], argv[2]));
    int exitCode = 1;
    MeEndpoint::create()->get([&exitCode](const MeResult& result) {
        if (const Error* error = result.error()) {
            std::cerr << error->localizedDescription() << '\n';
            if (isHeardAgain(*error)) {
                return;
            }
        } else {
            std::cout << "Signed in as " << result.success()->user->username.value_or("?") << '\n';
            exitCode = 0;
        }
        MainQueue::main().stop();
    });
    MainQueue::main().run();
    return exitCode;
}
