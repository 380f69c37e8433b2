#pragma once

#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPI/api/Outcome.hpp>

#include <functional>
#include <memory>
#include <string>

namespace KeloHost {

/// What the service answers to a user who signs in.
class SignedIn final : public KeloAPI::Object {
public:
    std::string key;
    std::string username;
};

/// Makes a `SignedIn` of "key" and "username", both required.
class SignedInParser final : public KeloAPI::JsonParser<SignedIn> {
public:
    std::shared_ptr<SignedIn> parse(const KeloAPI::JsonObject& json) const override;
};

struct SignInSuccess {
    /// Never null.
    std::shared_ptr<SignedIn> session;
};

using SignInResult = KeloAPI::Outcome<SignInSuccess>;

/// Signs a user in: POST sessions. The library leaves that to the host; this is how a host adds
/// calls of its own to it.
class SignInEndpoint : public KeloAPI::Endpoint {
public:
    static std::shared_ptr<SignInEndpoint> create();

    void signIn(const std::string& user, const std::string& password,
                std::function<void(const SignInResult& result)> completion);

protected:
    SignInEndpoint(Key key, std::shared_ptr<KeloAPI::Session> session);
};

} // namespace KeloHost
