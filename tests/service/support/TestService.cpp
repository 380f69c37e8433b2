#include "support/TestService.hpp"

namespace KeloServiceTest {
namespace {

/// One certificate for all tests of a process.
const CertificateFiles& sharedCertificate() {
    static const TemporaryFolder folder;
    static const CertificateFiles files(folder);
    return files;
}

} // namespace

std::u32string codePoints(const std::string& text) {
    std::u32string points;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte & 0xC0) == 0x80) {
            points.back() = points.back() << 6 | (byte & 0x3F);
        } else {
            const unsigned mask = byte < 0x80 ? 0x7F : byte < 0xE0 ? 0x1F : byte < 0xF0 ? 0x0F : 7;
            points += static_cast<char32_t>(byte & mask);
        }
    }
    return points;
}

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

Reply ServiceTest::send(const std::string& method, const std::string& path, const std::string& body,
                        const std::string& key) {
    httplib::Request request;
    request.method = method;
    request.path = path;
    request.body = body;
    if (!key.empty()) {
        request.headers.emplace(sessionHeader, key);
    }
    const auto result = client.send(request);
    EXPECT_TRUE(result) << path << ": " << httplib::to_string(result.error());
    return result ? Reply{result->status, Json::parse(result->body)} : Reply{};
}

httplib::Result ServiceTest::get(const std::string& path, const std::string& key) {
    return client.Get(path,
                      key.empty() ? httplib::Headers{} : httplib::Headers{{sessionHeader, key}});
}

Json ServiceTest::data(const std::string& path) {
    const Reply reply = send("GET", path);
    EXPECT_EQ(reply.status, 200) << path << ": " << reply.json;
    return reply.data();
}

std::string ServiceTest::defaultVideoPath(const Json& post) {
    for (const Json& offer : post.at("videoUrls")) {
        if (offer.at("format") == "h264" && offer.at("rate") == 0) {
            return pathOf(offer.at("videoUrl"));
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

std::string ServiceTest::signIn(const std::string& username) {
    return control("POST", "/_service/sessions", {{"username", username}}).at("key");
}

int ServiceTest::fired(std::size_t fault) {
    return control("GET", "/_service/faults").at("faults").at(fault).at("fired").get<int>();
}

std::string ServiceTest::pathOf(const Json& url) const {
    const auto text = url.get<std::string>();
    EXPECT_TRUE(text.starts_with(service.url() + "/")) << text;
    return text.substr(service.url().size());
}

} // namespace KeloServiceTest
