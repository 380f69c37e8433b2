#pragma once

#include "Process.hpp"

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>
#include <vector>

namespace KeloAPI::testing {

/// What the stand-in says of one request that it got.
struct SeenRequest {
    std::string method;
    /// As on the wire.
    std::string path;
    std::string query;
    /// In the order of their arrival.
    std::vector<std::pair<std::string, std::string>> headers;
    /// Its first bytes, where it is large.
    std::string body;
    std::int64_t bodyBytes = 0;
    /// Of the whole body, where the stand-in took it as it arrived; empty otherwise.
    std::string bodySha256;
    std::int64_t connection = 0;

    /// The value of the first header of this name; empty when there is none.
    std::string header(std::string_view name) const;
    bool hasHeader(std::string_view name) const;
};

/// The service's stand-in as a process of its own, on a free port of this machine. It ends with
/// this object.
class StandIn {
public:
    /// The session key of the seeded user who is signed in from the start.
    static constexpr const char* sessionKey = "kelo-development-session";
    static constexpr const char* username = "mara";

    explicit StandIn(const std::vector<std::string>& arguments = {});

    int port() const { return _port; }
    /// "localhost:PORT", whose certificate the library has pinned.
    std::string host() const { return "localhost:" + std::to_string(_port); }

    /// The requests since the last call, control requests left out.
    std::vector<SeenRequest> requests();
    /// Adds a fault, or a list of them.
    void addFault(const nlohmann::json& fault);
    /// The faults with how often each has fired.
    nlohmann::json faults();
    /// Signs the user in anew and returns the session's key.
    std::string signIn(const std::string& user);
    void expire(const std::string& key);
    /// Demands a captcha for the session and returns its URL.
    std::string demandCaptcha(const std::string& key);
    /// Solves the captcha at this URL.
    void solveCaptcha(const std::string& url);
    nlohmann::json connections();

    /// HTTPS requests of the test's own, outside the library: the answer's body, or the JSON in it.
    std::string get(const std::string& path);
    nlohmann::json call(const std::string& method, const std::string& path,
                        const std::string& body = {});

private:
    std::string send(const std::string& method, const std::string& path, const std::string& body);

    Process _process;
    int _port = 0;
    std::int64_t _seen = 0;
};

} // namespace KeloAPI::testing
