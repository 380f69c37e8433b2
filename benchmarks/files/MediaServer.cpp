#include "benchmarks/files/MediaServer.hpp"

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <random>
#include <stdexcept>

namespace KeloBenchmark {

namespace {

constexpr const char* memory = "/dev/shm";

std::filesystem::path scratch() {
    const bool inMemory = access(memory, W_OK) == 0;
    const auto parent =
        inMemory ? std::filesystem::path(memory) : std::filesystem::temp_directory_path();
    std::string pattern = (parent / "kelo-bench-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("no folder for the benchmark's files");
    }
    return pattern;
}

} // namespace

MediaServer::MediaServer()
    : _certificate(KeloAPI::support::TestCertificate::selfSigned({}))
    , _server(_certificate) {
    if (!_server.isServing()) {
        throw std::runtime_error("nginx does not start");
    }
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

std::string MediaServer::certificatePath() const {
    return (_server.files() / "certificate.pem").string();
}

KeloAPI::ServerTrustPolicyManager MediaServer::trust() const {
    using namespace KeloAPI;
    return ServerTrustPolicyManager({{"localhost", PinCertificates{{_certificate.certificate()}}}});
}

ScratchFolder::ScratchFolder()
    : _path(scratch()) {}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(_path, ignored);
}

void ScratchFolder::empty() const {
    for (const auto& entry : std::filesystem::directory_iterator(_path)) {
        std::filesystem::remove_all(entry);
    }
}

} // namespace KeloBenchmark
