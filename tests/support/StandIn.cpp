#include "StandIn.hpp"

#include <KeloAPI/api/internal/Base64.hpp>
#include <KeloAPI/base/URL.hpp>

#include <curl/curl.h>
#include <strings.h>

#include <algorithm>
#include <stdexcept>

namespace KeloAPI::testing {

namespace {

std::vector<std::string> command(const std::vector<std::string>& arguments) {
    const std::string certificate = KELO_CERTIFICATES_PATH "/development-1";
    std::vector<std::string> words = {KELO_SERVICE_PATH, "--port", "0", "--quiet",
                                      "--exit-with-parent"};
    if (std::find(arguments.begin(), arguments.end(), "--certificate") == arguments.end()) {
        words.insert(words.end(),
                     {"--certificate", certificate + ".pem", "--key", certificate + ".key"});
    }
    words.insert(words.end(), arguments.begin(), arguments.end());
    return words;
}

std::size_t gather(char* bytes, std::size_t size, std::size_t count, void* text) {
    static_cast<std::string*>(text)->append(bytes, size * count);
    return size * count;
}

} // namespace

std::string SeenRequest::header(std::string_view name) const {
    for (const auto& [field, value] : headers) {
        if (strcasecmp(field.c_str(), std::string(name).c_str()) == 0) {
            return value;
        }
    }
    return {};
}

bool SeenRequest::hasHeader(std::string_view name) const {
    return std::any_of(headers.begin(), headers.end(), [&](const auto& field) {
        return strcasecmp(field.first.c_str(), std::string(name).c_str()) == 0;
    });
}

StandIn::StandIn(const std::vector<std::string>& arguments)
    : _process(command(arguments)) {
    const std::string line = _process.readLine();
    const auto colon = line.rfind(':');
    if (colon == std::string::npos) {
        throw std::runtime_error("the stand-in did not start: " + line);
    }
    _port = std::stoi(line.substr(colon + 1));
}

std::string StandIn::send(const std::string& method, const std::string& path,
                          const std::string& body) {
    std::string answer;
    const std::string url = "https://127.0.0.1:" + std::to_string(_port) + path;
    CURL* easy = curl_easy_init();
    curl_easy_setopt(easy, CURLOPT_URL, url.c_str());
    curl_easy_setopt(easy, CURLOPT_SSL_VERIFYPEER, 0L);
    curl_easy_setopt(easy, CURLOPT_SSL_VERIFYHOST, 0L);
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy, CURLOPT_TIMEOUT, static_cast<long>(timeLimit.count()));
    curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, method.c_str());
    if (!body.empty()) {
        curl_easy_setopt(easy, CURLOPT_COPYPOSTFIELDS, body.c_str());
    }
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &gather);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, &answer);
    const CURLcode code = curl_easy_perform(easy);
    long status = 0;
    curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
    curl_easy_cleanup(easy);
    if (code != CURLE_OK || status >= 400) {
        throw std::runtime_error(method + " " + path + " failed: " + curl_easy_strerror(code) +
                                 " " + answer);
    }
    return answer;
}

std::string StandIn::get(const std::string& path) {
    return send("GET", path, "");
}

nlohmann::json StandIn::call(const std::string& method, const std::string& path,
                             const std::string& body) {
    const std::string answer = send(method, path, body);
    return answer.empty() ? nlohmann::json() : nlohmann::json::parse(answer);
}

std::vector<SeenRequest> StandIn::requests() {
    const auto log = call("GET", "/_service/requests?since=" + std::to_string(_seen));
    _seen = log.at("last").get<std::int64_t>();
    std::vector<SeenRequest> requests;
    for (const auto& entry : log.at("requests")) {
        SeenRequest seen;
        seen.method = entry.at("method");
        seen.path = entry.at("path");
        seen.query = entry.at("query").is_string() ? entry.at("query").get<std::string>() : "";
        for (const auto& header : entry.at("headers")) {
            seen.headers.emplace_back(header.at(0), header.at(1));
        }
        seen.body = base64Decoded(entry.at("body").get<std::string>()).value_or("");
        seen.bodyBytes = entry.at("bodyBytes");
        seen.bodySha256 = entry.value("bodySha256", "");
        seen.connection = entry.at("connection");
        requests.push_back(std::move(seen));
    }
    return requests;
}

void StandIn::addFault(const nlohmann::json& fault) {
    call("POST", "/_service/faults", fault.dump());
}

nlohmann::json StandIn::faults() {
    return call("GET", "/_service/faults").at("faults");
}

std::string StandIn::signIn(const std::string& user) {
    const nlohmann::json body = {{"username", user}};
    return call("POST", "/_service/sessions", body.dump()).at("key");
}

void StandIn::expire(const std::string& key) {
    call("POST", "/_service/sessions/" + key + "/expire");
}

std::string StandIn::demandCaptcha(const std::string& key) {
    return call("POST", "/_service/sessions/" + key + "/captcha").at("url");
}

void StandIn::solveCaptcha(const std::string& url) {
    call("POST", URL::parse(url)->path() + "/solve");
}

nlohmann::json StandIn::connections() {
    return call("GET", "/_service/connections");
}

} // namespace KeloAPI::testing
