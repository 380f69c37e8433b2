#include "support/TestService.hpp"

namespace KeloServiceTest {
namespace {

/// One certificate for all tests of a process.
struct SharedCertificate {
    SharedCertificate() { writeCertificate(certificate, key); }

    TemporaryFolder folder;
    std::string certificate = folder.file("certificate.pem");
    std::string key = folder.file("certificate.key");
};

const SharedCertificate& sharedCertificate() {
    static const SharedCertificate shared;
    return shared;
}

} // namespace

Client::Client(int port)
    : SSLClient("localhost", port) {
    set_ca_cert_path(sharedCertificate().certificate);
    set_keep_alive(true);
    set_tcp_nodelay(true);
    set_read_timeout(10);
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

httplib::Result ServiceTest::get(const std::string& path, const std::string& key) {
    return client.Get(path,
                      key.empty() ? httplib::Headers{} : httplib::Headers{{sessionHeader, key}});
}

Json ServiceTest::data(const std::string& path) {
    const auto result = get(path);
    if (!result || result->status != 200) {
        ADD_FAILURE() << path << ": "
                      << (result ? result->body : httplib::to_string(result.error()));
        return Json::object();
    }
    return Json::parse(result->body).at("data");
}

std::string ServiceTest::mediaPath(const Json& url) {
    const auto text = url.get<std::string>();
    EXPECT_TRUE(text.starts_with(service.url() + "/media/")) << text;
    return text.substr(service.url().size());
}

std::string ServiceTest::defaultVideoPath(const Json& post) {
    for (const Json& offer : post.at("videoUrls")) {
        if (offer.at("format") == "h264" && offer.at("rate") == 0) {
            return mediaPath(offer.at("videoUrl"));
        }
    }
    ADD_FAILURE() << "the post has no default video";
    return "/";
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
