#include <KeloAPI/curl/internal/EasyHandles.hpp>

#include <cstddef>

namespace KeloAPI {

namespace {

constexpr std::size_t maxIdle = 64;

} // namespace

void EasyHandles::clear() noexcept {
    for (CURL* easy : _idle) {
        curl_easy_cleanup(easy);
    }
    _idle.clear();
}

CURL* EasyHandles::take() {
    if (_idle.empty()) {
        _idle.reserve(maxIdle); // so that giving back never needs memory
        return curl_easy_init();
    }
    CURL* easy = _idle.back();
    _idle.pop_back();
    return easy;
}

void EasyHandles::giveBack(CURL* easy, bool mayServeAgain) noexcept {
    if (!mayServeAgain || _idle.size() == _idle.capacity()) {
        curl_easy_cleanup(easy);
        return;
    }
    // A reset would leave the shared cookies with the handle, and lose the list of their files.
    curl_easy_setopt(easy, CURLOPT_SHARE, nullptr);
    curl_easy_setopt(easy, CURLOPT_COOKIEFILE, nullptr);
    curl_easy_reset(easy);
    _idle.push_back(easy);
}

} // namespace KeloAPI
