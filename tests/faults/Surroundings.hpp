#pragma once

#include "support/RawServer.hpp"
#include "support/TestCertificates.hpp"

#include <KeloAPI/http/ServerTrustPolicy.hpp>

#include <memory>
#include <string>

namespace KeloAPI::testing {

/// What every parser takes: records of all kinds in one.
inline const std::string record =
    R"("postId":1,"likeId":2,"repostId":3,"mediaId":"m","longformId":"l","count":4,"soundId":"s",)"
    R"("name":"n","soundUrl":"https://media.example/s","username":"u")";
inline const std::string wellBody = R"({"data":{)" + record + "}}";
/// The body of a response that nobody has asked for.
inline const std::string strayBody = R"({"error":"stray","code":666})";

/// A response over HTTP/1.1 with this body and its length.
std::string answerOf(const std::string& body, const std::string& status = "200 OK",
                     const std::string& fields = "");

/// An address at which nobody takes a connection, though somebody listens.
class DeafListener {
public:
    DeafListener();
    DeafListener(const DeafListener&) = delete;
    DeafListener& operator=(const DeafListener&) = delete;
    ~DeafListener();

    std::string host() const;

private:
    int _listener;
    int _waiting;
    int _port;
};

/// What stands around a server at fault: certificates, and servers that are well.
struct Surroundings {
    Surroundings();

    /// The servers at fault are pinned under their number, those that are well by name.
    ServerTrustPolicyManager policies() const;

    TestCertificate leaf = TestCertificate::selfSigned({});
    TestCertificate expired = TestCertificate::selfSigned({.notAfter = std::chrono::hours(-1) / 2});
    TestCertificate notYet = TestCertificate::selfSigned({.notBefore = std::chrono::hours(1)});
    TestCertificate ofOtherName = TestCertificate::selfSigned({.names = "DNS:other.example"});
    TestCertificate unknown = TestCertificate::selfSigned({});

    std::shared_ptr<SSL_CTX> tls = leaf.serverContext();
    std::shared_ptr<SSL_CTX> tlsWithHTTP2 = leaf.serverContext();
    std::shared_ptr<SSL_CTX> oldTLS = leaf.serverContext();
    std::shared_ptr<SSL_CTX> expiredTLS = expired.serverContext();
    std::shared_ptr<SSL_CTX> notYetTLS = notYet.serverContext();
    std::shared_ptr<SSL_CTX> ofOtherNameTLS = ofOtherName.serverContext();
    std::shared_ptr<SSL_CTX> unknownTLS = unknown.serverContext();

    RawServer other{tls, answeringAll(answerOf(wellBody))};
    RawServer plain{answeringAll(answerOf(wellBody))};
    RawServer stranger{unknownTLS, answeringAll(answerOf(wellBody))};
    DeafListener deaf;
};

} // namespace KeloAPI::testing
