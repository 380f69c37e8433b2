#include <KeloAPI/curl/internal/CurlOptions.hpp>
#include <KeloAPI/curl/internal/TrustStore.hpp>

#include <openssl/ssl.h>

#include <cstdlib>

namespace KeloAPI {

namespace {

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

/// libcurl would write the secrets of its connections to the file that the environment names in
/// SSLKEYLOGFILE: with them anybody can read what was sent.
CURLcode withholdSecrets(CURL* /*easy*/, void* context, void* /*unused*/) noexcept {
    SSL_CTX_set_keylog_callback(static_cast<SSL_CTX*>(context), nullptr);
    return CURLE_OK;
}

} // namespace

TrustStore::TrustStore(const ServerTrustPolicy* policy)
    : _file(environment("SSL_CERT_FILE"))
    , _directory(environment("SSL_CERT_DIR")) {
    if (policy == nullptr) {
        return;
    }
    if (const auto* pins = std::get_if<PinCertificates>(policy)) {
        _pinned = true;
        for (const Certificate& certificate : pins->certificates) {
            _pem += certificate.pem();
        }
    }
}

void TrustStore::applyTo(CurlOptions& options) const {
    options.set(CURLOPT_SSL_VERIFYPEER, 1L);
    options.set(CURLOPT_SSL_VERIFYHOST, 2L);
    options.set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    if (_pinned) {
        applyPinned(options);
    } else {
        applySystem(options);
    }
    // A proxy is not the host: it is judged by the system's store in either case.
    if (!_file.empty()) {
        options.set(CURLOPT_PROXY_CAINFO, _file.c_str());
    }
    if (!_directory.empty()) {
        options.set(CURLOPT_PROXY_CAPATH, _directory.c_str());
    }
}

void TrustStore::applyPinned(CurlOptions& options) const {
    // The built-in file and directory would be trusted beside the pins.
    options.set(CURLOPT_CAINFO, nullptr);
    options.set(CURLOPT_CAPATH, nullptr);
    curl_blob blob{const_cast<char*>(_pem.data()), _pem.size(), CURL_BLOB_NOCOPY};
    options.set(CURLOPT_CAINFO_BLOB, &blob);
    options.set(CURLOPT_SSL_CTX_FUNCTION, &withholdSecrets);
}

void TrustStore::applySystem(CurlOptions& options) const {
    if (!_file.empty()) {
        options.set(CURLOPT_CAINFO, _file.c_str());
    }
    if (!_directory.empty()) {
        options.set(CURLOPT_CAPATH, _directory.c_str());
    }
}

} // namespace KeloAPI
