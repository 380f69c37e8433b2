#include "benchmarks/support/MediaServer.hpp"

#include <fstream>
#include <random>

namespace KeloBenchmark {

MediaServer::MediaServer()
    : _certificate(KeloAPI::testing::TestCertificate::selfSigned({}))
    , _server(_certificate) {
    std::ofstream(certificatePath()) << _certificate.pem();
}

void MediaServer::add(const std::string& name, std::size_t bytes) const {
    std::ofstream file(_server.files() / name, std::ios::binary);
    std::mt19937_64 random(bytes);
    std::vector<std::uint64_t> block(std::size_t{64} << 10U);
    for (std::size_t written = 0; written < bytes;) {
        for (std::uint64_t& number : block) {
            number = random();
        }
        const std::size_t next = std::min(bytes - written, block.size() * sizeof block[0]);
        file.write(reinterpret_cast<const char*>(block.data()), static_cast<std::streamsize>(next));
        written += next;
    }
}

void MediaServer::addContent(const std::string& name, const std::string& content) const {
    std::ofstream(_server.files() / name, std::ios::binary) << content;
}

std::string MediaServer::certificatePath() const {
    return (_server.files() / "certificate.pem").string();
}

KeloAPI::ServerTrustPolicyManager MediaServer::trust() const {
    using namespace KeloAPI;
    return ServerTrustPolicyManager({{"localhost", PinCertificates{{_certificate.certificate()}}}});
}

} // namespace KeloBenchmark
