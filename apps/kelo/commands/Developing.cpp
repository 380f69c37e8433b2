#include "commands/Commands.hpp"

#include <unistd.h>

#include <filesystem>

namespace KeloHost {

using namespace KeloAPI;

namespace {

/// A call with the given body.
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

constexpr const char* program = "kelo-service";

std::string besideThisProgram() {
    std::error_code error;
    return (std::filesystem::read_symlink("/proc/self/exe", error).parent_path() / program)
        .string();
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

void serve(const HostPointer& /*host*/, const Arguments& arguments) {
    // This program becomes the service; the arguments are its own.
    std::vector<std::string> texts = arguments.texts("rest");
    texts.insert(texts.begin(), program);
    std::vector<char*> words;
    words.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        words.push_back(text.data());
    }
    words.push_back(nullptr);
    execv(besideThisProgram().c_str(), words.data());
    execvp(program, words.data());
    throw Failure(ExitCode::Failed, "kelo-service is neither beside kelo nor in PATH");
}

} // namespace KeloHost
