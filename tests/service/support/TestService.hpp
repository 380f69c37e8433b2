#pragma once

#include "service/seed/Seed.hpp"
#include "service/Service.hpp"
#include "support/RawClient.hpp"
#include "support/TestCertificate.hpp"

#include <gtest/gtest.h>
#include <httplib.h>

#include <string>

namespace KeloServiceTest {

using KeloService::Json;

inline constexpr const char* sessionHeader = "kelo-session-id";
inline const std::string developmentKey(KeloService::developmentSessionKey);

/// Of a text in UTF-8.
std::u32string codePoints(const std::string& text);

/// A client that keeps its one connection and trusts the test certificate.
class Client : public httplib::SSLClient {
public:
    explicit Client(int port);
};

/// An answer of the service with its document.
struct Reply {
    int status = 0;
    Json json;

    Json data() const { return json.value("data", Json()); }
    int code() const { return json.value("code", 0); }
    std::string error() const { return json.value("error", ""); }
};

/// A fresh, seeded service in this process, and a client that trusts its certificate.
class ServiceTest : public ::testing::Test {
public:
    ServiceTest();
    ~ServiceTest() override;

protected:
    static KeloService::Settings settings();

    Client makeClient() const { return Client(service.port()); }
    RawClient rawClient() const { return RawClient(service.port()); }

    /// Sends a call with the development session's key, or with another one; an empty key sends no
    /// header.
    Reply send(const std::string& method, const std::string& path, const std::string& body = "",
               const std::string& key = developmentKey);
    /// GET in the same way.
    httplib::Result get(const std::string& path, const std::string& key = developmentKey);
    /// The "data" of a GET that has to succeed.
    Json data(const std::string& path);
    /// The records of a page that has to come.
    Json records(const std::string& path) { return data(path).at("records"); }
    /// The newest posts, nearly all of them.
    Json manyPosts() { return records("/timelines/all?size=1000"); }
    /// The path of a post's default video.
    std::string defaultVideoPath(const Json& post);
    /// That of the newest post's.
    std::string videoPath() { return defaultVideoPath(records("/timelines/latest?size=1").at(0)); }
    /// Calls a control route and gives its answer's document.
    Json control(const std::string& method, const std::string& path, const Json& body = nullptr);
    /// The key of a new session.
    std::string signIn(const std::string& username);
    Json addFault(const Json& fault) { return control("POST", "/_service/faults", fault); }
    int fired(std::size_t fault = 0);
    /// The path of an address that must be the service's own.
    std::string pathOf(const Json& url) const;

    KeloService::Service service;
    Client client{service.port()};
    Client controlClient{service.port()};
};

} // namespace KeloServiceTest
