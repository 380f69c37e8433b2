#include <KeloAPI/curl/internal/TLSFarewell.hpp>

#include <cstddef>

namespace KeloAPI {

namespace {

using Flag = std::shared_ptr<bool>;

void release(void* /*session*/, void* flag, CRYPTO_EX_DATA* /*all*/, int /*place*/, long /*unused*/,
             void* /*unused*/) noexcept {
    delete static_cast<Flag*>(flag);
}

/// Where a session keeps its flag: as long as it lives itself.
int place() {
    static const int made = SSL_get_ex_new_index(0, nullptr, nullptr, nullptr, &release);
    return made;
}

void onMessage(int isSent, int /*version*/, int type, const void* bytes, std::size_t size,
               SSL* session, void* /*unused*/) noexcept {
    constexpr std::size_t description = 1; // behind the alert's level
    const auto* flag = static_cast<const Flag*>(SSL_get_ex_data(session, place()));
    if (flag != nullptr && isSent == 0 && type == SSL3_RT_ALERT && size > description &&
        static_cast<const unsigned char*>(bytes)[description] == SSL_AD_CLOSE_NOTIFY) {
        **flag = true;
    }
}

} // namespace

TLSFarewell::TLSFarewell(SSL* session) {
    auto kept = std::make_unique<Flag>(_wasHeard);
    delete static_cast<Flag*>(SSL_get_ex_data(session, place()));
    if (SSL_set_ex_data(session, place(), kept.get()) == 1) {
        static_cast<void>(kept.release()); // the session's
        SSL_set_msg_callback(session, &onMessage);
    }
}

} // namespace KeloAPI
