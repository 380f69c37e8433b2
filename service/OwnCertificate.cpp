#include "service/OwnCertificate.hpp"

#include <fcntl.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string_view>

namespace KeloService {

namespace {

using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;
using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using File = std::unique_ptr<std::FILE, decltype(&std::fclose)>;

constexpr long day = 24L * 60 * 60;
constexpr long validDays = 825; // more is refused on some phones

[[noreturn]] void fail(const std::string& what) {
    throw std::runtime_error("cannot make a certificate: " + what +
                             "; give one with --certificate and --key");
}

std::filesystem::path stateFolder() {
    for (const auto& [variable, below] :
         {std::pair{"XDG_STATE_HOME", ""}, std::pair{"HOME", ".local/state"}}) {
        const char* folder = std::getenv(variable);
        if (folder != nullptr && *folder == '/') {
            return std::filesystem::path(folder) / below / "kelo-service";
        }
    }
    fail("neither XDG_STATE_HOME nor HOME says where to keep it");
}

/// Made with these rights at once: nobody else may read a key even for a moment.
File create(const std::filesystem::path& path, mode_t rights) {
    const int descriptor =
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, rights);
    if (descriptor < 0) {
        fail(path.string() + ": " + std::strerror(errno));
    }
    return {::fdopen(descriptor, "w"), &std::fclose};
}

void addExtension(X509* certificate, int kind, const char* value) {
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, certificate, certificate, nullptr, nullptr, 0);
    const std::unique_ptr<X509_EXTENSION, decltype(&X509_EXTENSION_free)> extension(
        X509V3_EXT_conf_nid(nullptr, &context, kind, value), &X509_EXTENSION_free);
    X509_add_ext(certificate, extension.get(), -1);
}

Certificate selfSigned(EVP_PKEY* key) {
    Certificate certificate(X509_new(), &X509_free);
    std::uint32_t serial = 0;
    RAND_bytes(reinterpret_cast<unsigned char*>(&serial), sizeof serial);
    X509_set_version(certificate.get(), X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), (serial >> 1U) + 1L);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -day);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), validDays * day);
    X509_NAME* name = X509_get_subject_name(certificate.get());
    const auto* text = reinterpret_cast<const unsigned char*>("kelo-service on this machine");
    X509_NAME_add_entry_by_NID(name, NID_commonName, MBSTRING_ASC, text, -1, -1, 0);
    X509_set_issuer_name(certificate.get(), name);
    X509_set_pubkey(certificate.get(), key);
    addExtension(certificate.get(), NID_subject_alt_name, "DNS:localhost,IP:127.0.0.1,IP:::1");
    addExtension(certificate.get(), NID_ext_key_usage, "serverAuth");
    if (X509_sign(certificate.get(), key, EVP_sha256()) == 0) {
        fail("OpenSSL does not sign it");
    }
    return certificate;
}

void make(const CertificateFiles& files) {
    const Key key(EVP_EC_gen("P-256"), &EVP_PKEY_free);
    if (!key) {
        fail("OpenSSL does not make a key");
    }
    const File keyFile = create(files.key, 0600);
    const bool written = PEM_write_PrivateKey(keyFile.get(), key.get(), nullptr, nullptr, 0,
                                              nullptr, nullptr) == 1 &&
                         std::fflush(keyFile.get()) == 0;
    const File file = create(files.certificate, 0644);
    if (!written || PEM_write_X509(file.get(), selfSigned(key.get()).get()) != 1 ||
        std::fflush(file.get()) != 0) {
        fail(files.certificate + ": " + std::strerror(errno));
    }
}

/// True for a pair that serves for another month.
bool isUsable(const CertificateFiles& files) {
    const File file(std::fopen(files.certificate.c_str(), "re"), &std::fclose);
    const File keyFile(std::fopen(files.key.c_str(), "re"), &std::fclose);
    if (!file || !keyFile) {
        return false;
    }
    const Certificate certificate(PEM_read_X509(file.get(), nullptr, nullptr, nullptr), &X509_free);
    const Key key(PEM_read_PrivateKey(keyFile.get(), nullptr, nullptr, nullptr), &EVP_PKEY_free);
    std::time_t soon = std::time(nullptr) + 30 * day;
    return certificate && key && X509_check_private_key(certificate.get(), key.get()) == 1 &&
           X509_cmp_time(X509_get0_notAfter(certificate.get()), &soon) > 0;
}

} // namespace

CertificateFiles ownCertificate() {
    const std::filesystem::path folder = stateFolder();
    std::error_code failure;
    std::filesystem::create_directories(folder.parent_path(), failure);
    if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
        fail(folder.string() + ": " + std::strerror(errno));
    }
    // Two that start together must not make a certificate of the one and a key of the other.
    const File lock = create(folder / "lock", 0600);
    ::flock(::fileno(lock.get()), LOCK_EX);
    CertificateFiles files{folder / "certificate.pem", folder / "key.pem"};
    if (!isUsable(files)) {
        make(files);
    }
    return files;
}

} // namespace KeloService
