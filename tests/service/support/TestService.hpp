#pragma once

#include "../../support/TemporaryFolder.hpp"
#include "../../support/TimeLimit.hpp"
#include "service/seed/Seed.hpp"
#include "service/Service.hpp"
#include "support/RawClient.hpp"

#include <gtest/gtest.h>
#include <httplib.h>

#include <string>

namespace KeloServiceTest {

using KeloAPI::testing::eventually;
using KeloAPI::testing::TemporaryFolder;
using KeloAPI::testing::timeLimit;
using KeloService::Json;

inline constexpr const char* sessionHeader = "kelo-session-id";
inline constexpr const char* developmentKey = KeloService::developmentSessionKey.data();

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
    /// What comes for these bytes on a connection of their own, as RawClient::readAll reads it.
    RawClient::Received exchange(const std::string& bytes,
                                 std::size_t enough = std::string::npos) const;

    /// GET with the development session's key.
    httplib::Result get(const std::string& path);
    /// The "data" of a GET that has to succeed.
    Json data(const std::string& path);
    /// Calls a control route and gives its answer's document.
    Json control(const std::string& method, const std::string& path, const Json& body = nullptr);
    Json addFault(const Json& fault) { return control("POST", "/_service/faults", fault); }
    int fired(std::size_t fault = 0);

    KeloService::Service service;
    Client client{service.port()};
    Client controlClient{service.port()};
};

} // namespace KeloServiceTest
