#include "SignIn.hpp"

#include <KeloAPI/api/Api.hpp>

#include <utility>

namespace KeloHost {

using namespace KeloAPI;

std::shared_ptr<SignedIn> SignedInParser::parse(const JsonObject& json) const {
    const auto key = json["key"].text();
    const auto username = json["username"].text();
    if (!key || !username) {
        throw JsonParseError(JsonParseError::InsufficientData);
    }
    auto signedIn = std::make_shared<SignedIn>();
    signedIn->key = *key;
    signedIn->username = *username;
    return signedIn;
}

SignInEndpoint::SignInEndpoint(Key key, std::shared_ptr<Session> session)
    : Endpoint(key, std::move(session)) {
    setPath("sessions");
    setMethod(Method::POST);
    setParameterEncoding(ParameterEncoding::JSON);
}

std::shared_ptr<SignInEndpoint> SignInEndpoint::create() {
    return make<SignInEndpoint>(Api::session(SessionType::UnAuthenticated));
}

void SignInEndpoint::signIn(const std::string& user, const std::string& password,
                            std::function<void(const SignInResult&)> completion) {
    setParameters({{"username", user}, {"password", password}});
    request(std::make_shared<SignedInParser>(),
            [completion = std::move(completion)](
                const std::vector<std::shared_ptr<SignedIn>>& sessions,
                const std::optional<Metadata>&, const Timeline&, std::optional<Error> error) {
                if (!error && sessions.empty()) {
                    error = Error::withMessage("kelo", 1, "the service gave no session");
                }
                completion(error ? SignInResult(SignInResult::Error{*error})
                                 : SignInResult(SignInSuccess{sessions.front()}));
            });
}

} // namespace KeloHost
