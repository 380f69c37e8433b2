#include <KeloAPI/curl/internal/Libraries.hpp>
#include <KeloAPI/queues/internal/ExitGuard.hpp>

#include <curl/curl.h>
#include <openssl/ssl.h>

#include <mutex>

namespace KeloAPI {

void initialiseNetworkLibraries() {
    static std::once_flag once;
    std::call_once(once, [] {
        OPENSSL_init_ssl(0, nullptr);
        curl_global_init(CURL_GLOBAL_DEFAULT);
        ExitGuard::installBehindLibrary();
    });
}

} // namespace KeloAPI
