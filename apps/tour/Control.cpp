#include "Control.hpp"

#include "Calls.hpp"

#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/json/Json.hpp>

#include <utility>

namespace KeloTour::Control {

using namespace KeloAPI;

namespace {

JsonDocument call(Method method, const std::string& path, Parameters parameters = {}) {
    const auto endpoint = Endpoint::create(Api::session(SessionType::UnAuthenticated));
    endpoint->setPath("_service/" + path);
    endpoint->setMethod(method);
    if (method == Method::POST) {
        endpoint->setParameterEncoding(ParameterEncoding::JSON);
    }
    endpoint->setParameters(std::move(parameters));
    const std::string text = readText(endpoint);
    auto document = JsonDocument::parse(text);
    check(static_cast<bool>(document), "the service's control route answered no JSON");
    const auto root = document.value().root().object();
    check(root && !(*root)["error"].exists(), "the service's control route refused: " + text);
    return std::move(document.value());
}

JsonValue member(const JsonDocument& document, std::string_view key) {
    return (*document.root().object())[key];
}

/// The header fields of a request: a list of pairs.
std::map<std::string, std::string> headersOf(const JsonObject& request) {
    std::map<std::string, std::string> headers;
    const auto fields = request["headers"].array();
    check(fields.has_value(), "a request has no header fields");
    for (const JsonValue field : *fields) {
        std::vector<std::string> pair;
        const auto parts = field.array();
        check(parts && parts->size() == 2, "a header field is no pair");
        for (const JsonValue part : *parts) {
            pair.push_back(part.description());
        }
        headers[pair[0]] = pair[1];
    }
    return headers;
}

/// The service gives bodies in base64, always well formed.
std::string fromBase64(std::string_view text) {
    constexpr std::string_view digits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    std::uint32_t bits = 0;
    int count = 0;
    for (const char c : text.substr(0, text.find('='))) {
        bits = bits << 6 | static_cast<std::uint32_t>(digits.find(c));
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes += static_cast<char>(bits >> count & 0xFF);
        }
    }
    return bytes;
}

} // namespace

std::string addSession(const std::string& username) {
    const auto answer = call(Method::POST, "sessions", {{"username", username}});
    const auto key = member(answer, "key").text();
    check(key.has_value(), "the service made no session");
    return std::string(*key);
}

void expireSession(const std::string& key) {
    call(Method::POST, "sessions/" + key + "/expire");
}

void demandCaptcha(const std::string& key) {
    call(Method::POST, "sessions/" + key + "/captcha");
}

void addFault(const std::string& path, Parameters action) {
    call(Method::POST, "faults",
         {{"match", Parameters{{"path", path}}}, {"action", std::move(action)}});
}

bool allFaultsHappened() {
    const auto answer = call(Method::GET, "faults");
    const auto faults = member(answer, "faults").objects();
    check(faults && !faults->empty(), "the service knows of no fault");
    bool all = true;
    for (const JsonObject fault : *faults) {
        all = all && fault["fired"].integer() == 1;
    }
    call(Method::DELETE, "faults");
    return all;
}

std::int64_t lastRequest() {
    return member(call(Method::GET, "requests"), "last").integer().value_or(0);
}

std::vector<Received> requestsSince(std::int64_t number) {
    const auto answer = call(Method::GET, "requests", {{"since", number}});
    const auto requests = member(answer, "requests").objects();
    check(requests.has_value(), "the service does not tell its requests");
    std::vector<Received> received;
    for (const JsonObject request : *requests) {
        Received one;
        one.method = request["method"].text().value_or("");
        one.path = request["path"].text().value_or("");
        one.query = request["query"].text().value_or("");
        one.headers = headersOf(request);
        one.body = fromBase64(request["body"].text().value_or(""));
        received.push_back(std::move(one));
    }
    return received;
}

Received received(const std::function<void()>& act) {
    const std::int64_t before = lastRequest();
    act();
    const auto requests = requestsSince(before);
    check(requests.size() == 1, std::to_string(requests.size()) + " requests came, not one");
    const Received& one = requests.front();
    came("the service received " + one.method + " " + one.path +
         (one.query.empty() ? "" : "?" + one.query) +
         (one.body.empty() ? ", no body" : ", the body " + one.body));
    return one;
}

std::vector<std::map<std::string, std::string>> kept(const std::string& kind) {
    const auto answer = call(Method::GET, "actions");
    const auto entries = member(answer, kind).objects();
    check(entries.has_value(), "the service does not tell its " + kind);
    std::vector<std::map<std::string, std::string>> deeds;
    for (const JsonObject entry : *entries) {
        auto& deed = deeds.emplace_back();
        for (const auto& [key, value] : entry) {
            deed.emplace(key, value.description());
        }
    }
    return deeds;
}

std::int64_t acceptedConnections() {
    return member(call(Method::GET, "connections"), "accepted").integer().value_or(0);
}

} // namespace KeloTour::Control
