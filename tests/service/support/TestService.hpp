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

/// A client that keeps its one connection and trusts the test certificate.
class Client : public httplib::SSLClient {
public:
    explicit Client(int port);
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

    /// GET with the development session's key, or with another one; an empty key sends no header.
    httplib::Result get(const std::string& path,
                        const std::string& key = std::string(KeloService::developmentSessionKey));
    /// The "data" of a GET that has to succeed.
    Json data(const std::string& path);
    /// The records of a page that has to come.
    Json records(const std::string& path) { return data(path).at("records"); }
    /// The path of a URL that must be the service's own medium.
    std::string mediaPath(const Json& url);
    /// The path of a post's default video.
    std::string defaultVideoPath(const Json& post);
    /// That of the newest post's.
    std::string videoPath() { return defaultVideoPath(records("/timelines/latest?size=1").at(0)); }
    /// Calls a control route and gives its answer's document.
    Json control(const std::string& method, const std::string& path, const Json& body = nullptr);
    Json addFault(const Json& fault) { return control("POST", "/_service/faults", fault); }
    int fired(std::size_t fault = 0);

    KeloService::Service service;
    Client client{service.port()};
    Client controlClient{service.port()};
};

inline constexpr const char* sessionHeader = "kelo-session-id";

} // namespace KeloServiceTest
