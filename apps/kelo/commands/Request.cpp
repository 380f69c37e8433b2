#include "commands/Commands.hpp"

namespace KeloHost {

using namespace KeloAPI;

namespace {

/// A call with a body as it is given.
class PlainEndpoint : public Endpoint {
public:
    KeloAPI::URLRequest URLRequest() const override {
        auto request = Endpoint::URLRequest();
        if (!_body.empty()) {
            request.body = Data(_body);
            request.headerFields["Content-Type"] = "application/json";
        }
        return request;
    }

protected:
    PlainEndpoint(Key key, std::string body)
        : Endpoint(key, Api::session(SessionType::Authenticated))
        , _body(std::move(body)) {}

private:
    const std::string _body;
};

Method methodNamed(const std::string& name) {
    return name == "POST"     ? Method::POST
           : name == "PUT"    ? Method::PUT
           : name == "DELETE" ? Method::DELETE
                              : Method::GET;
}

} // namespace

void sendRequest(const HostPointer& host, const Arguments& arguments) {
    const auto endpoint = Endpoint::make<PlainEndpoint>(arguments.text("--body"));
    endpoint->setPath(arguments.text("PATH"));
    endpoint->setMethod(methodNamed(arguments.text("--method")));
    endpoint->request([host](const std::optional<std::string>& text,
                             const std::optional<Error>& error) {
        host->hear(error, [&] { host->show({{"answer", valueOf(text)}}, {text.value_or("")}); });
    });
}

} // namespace KeloHost
