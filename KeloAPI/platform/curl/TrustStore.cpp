#include <KeloAPI/platform/curl/TrustStore.hpp>

#include <cstdlib>

namespace KeloAPI {

namespace {

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
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

void TrustStore::applyTo(CURL* easy) const {
    curl_easy_setopt(easy, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(easy, CURLOPT_SSL_VERIFYHOST, 2L);
    curl_easy_setopt(easy, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    if (_pinned) {
        applyPinned(easy);
    } else {
        applySystem(easy);
    }
    // A proxy is not the host: it is judged by the system's store in either case.
    if (!_file.empty()) {
        curl_easy_setopt(easy, CURLOPT_PROXY_CAINFO, _file.c_str());
    }
    if (!_directory.empty()) {
        curl_easy_setopt(easy, CURLOPT_PROXY_CAPATH, _directory.c_str());
    }
}

void TrustStore::applyPinned(CURL* easy) const {
    // The built-in file and directory would be trusted beside the pins.
    curl_easy_setopt(easy, CURLOPT_CAINFO, nullptr);
    curl_easy_setopt(easy, CURLOPT_CAPATH, nullptr);
    curl_blob blob{const_cast<char*>(_pem.data()), _pem.size(), CURL_BLOB_NOCOPY};
    curl_easy_setopt(easy, CURLOPT_CAINFO_BLOB, &blob);
}

void TrustStore::applySystem(CURL* easy) const {
    if (!_file.empty()) {
        curl_easy_setopt(easy, CURLOPT_CAINFO, _file.c_str());
    }
    if (!_directory.empty()) {
        curl_easy_setopt(easy, CURLOPT_CAPATH, _directory.c_str());
    }
}

} // namespace KeloAPI
