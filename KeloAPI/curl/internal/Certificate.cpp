#include <KeloAPI/curl/internal/Libraries.hpp>
#include <KeloAPI/http/Certificate.hpp>

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <limits>
#include <memory>

namespace KeloAPI {

namespace {

struct Release {
    void operator()(X509* certificate) const { X509_free(certificate); }
    void operator()(BIO* bio) const { BIO_free(bio); }
};
using X509Pointer = std::unique_ptr<X509, Release>;
using BIOPointer = std::unique_ptr<BIO, Release>;

/// The certificate that all of `der` is, or null.
X509Pointer decoded(std::string_view der) {
    if (der.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        return nullptr;
    }
    const auto* begin = reinterpret_cast<const unsigned char*>(der.data());
    const auto* at = begin;
    X509Pointer certificate(d2i_X509(nullptr, &at, static_cast<long>(der.size())));
    if (certificate && at != begin + der.size()) {
        certificate.reset();
    }
    // A failure here is an answer; it must not surface in somebody's next TLS call.
    ERR_clear_error();
    return certificate;
}

} // namespace

std::optional<Certificate> Certificate::fromDER(Data der) {
    initialiseNetworkLibraries();
    if (!decoded(der.text())) {
        return std::nullopt;
    }
    return Certificate(std::move(der));
}

std::optional<Certificate> Certificate::fromPEM(const std::string& pem) {
    initialiseNetworkLibraries();
    if (pem.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        return std::nullopt;
    }
    const BIOPointer bio(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
    unsigned char* bytes = nullptr;
    long size = 0;
    std::optional<Certificate> certificate;
    if (bio && PEM_bytes_read_bio(&bytes, &size, nullptr, PEM_STRING_X509, bio.get(), nullptr,
                                  nullptr) == 1) {
        certificate = fromDER(Data(
            std::string(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size))));
        OPENSSL_free(bytes);
    }
    ERR_clear_error();
    return certificate;
}

std::string Certificate::pem() const {
    std::string text;
    const X509Pointer certificate = decoded(_der.text());
    const BIOPointer bio(BIO_new(BIO_s_mem()));
    if (certificate && bio && PEM_write_bio_X509(bio.get(), certificate.get()) == 1) {
        char* bytes = nullptr;
        const long size = BIO_get_mem_data(bio.get(), &bytes);
        text.assign(bytes, static_cast<std::size_t>(size));
    }
    return text;
}

} // namespace KeloAPI
