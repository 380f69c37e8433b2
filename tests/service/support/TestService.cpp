#include "support/TestService.hpp"

#include "../../support/TestCertificates.hpp"

namespace KeloServiceTest {
namespace {

/// One self-signed certificate for "localhost" serves all tests of a process.
struct CertificateFiles {
    TemporaryFolder folder;
    KeloAPI::testing::TestCertificate made = KeloAPI::testing::TestCertificate::selfSigned({});
    std::string certificate = folder.write("test.pem", made.pem());
    std::string key = folder.write("test.key", made.keyPem());
};

const CertificateFiles& sharedCertificate() {
    static const CertificateFiles files;
    return files;
}

} // namespace

Client::Client(int port)
    : SSLClient("localhost", port) {
    set_ca_cert_path(sharedCertificate().certificate);
    set_keep_alive(true);
    set_tcp_nodelay(true);
    set_read_timeout(timeLimit);
}

ServiceTest::ServiceTest()
    : service(settings()) {
    service.start();
}

ServiceTest::~ServiceTest() {
    service.stop();
}

KeloService::Settings ServiceTest::settings() {
    KeloService::Settings settings;
    settings.port = 0;
    settings.certificate = sharedCertificate().certificate;
    settings.key = sharedCertificate().key;
    return settings;
}

RawClient::Received ServiceTest::exchange(const std::string& bytes, std::size_t enough) const {
    RawClient raw = rawClient();
    raw.send(bytes);
    return raw.readAll(enough);
}

httplib::Result ServiceTest::get(const std::string& path) {
    return client.Get(path, {{sessionHeader, developmentKey}});
}

Json ServiceTest::data(const std::string& path) {
    const auto result = get(path);
    EXPECT_TRUE(result && result->status == 200) << path;
    return result ? Json::parse(result->body).at("data") : Json();
}

Json ServiceTest::control(const std::string& method, const std::string& path, const Json& body) {
    httplib::Request request;
    request.method = method;
    request.path = path;
    request.body = body.is_null() ? "" : body.dump();
    const auto result = controlClient.send(request);
    if (!result) {
        ADD_FAILURE() << path << ": " << httplib::to_string(result.error());
        return Json::object();
    }
    EXPECT_EQ(result->status, 200) << result->body;
    return Json::parse(result->body);
}

int ServiceTest::fired(std::size_t fault) {
    return control("GET", "/_service/faults").at("faults").at(fault).at("fired").get<int>();
}

} // namespace KeloServiceTest
