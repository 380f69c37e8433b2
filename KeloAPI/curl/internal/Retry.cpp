#include <KeloAPI/curl/internal/Retry.hpp>

#include <curl/curl.h>

#include <algorithm>
#include <charconv>
#include <ctime>
#include <random>

namespace KeloAPI {

namespace {

using std::chrono::milliseconds;

/// What a Retry-After field asks for, in seconds or as a date; none where it is neither.
std::optional<milliseconds> retryAfter(const HeaderFields& fields) {
    const auto found = fields.find("Retry-After");
    if (found == fields.end()) {
        return std::nullopt;
    }
    const std::string& text = found->second;
    std::int64_t seconds = 0;
    const auto [end, failed] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    if (failed == std::errc() && end == text.data() + text.size()) {
        constexpr std::int64_t maxSeconds = 1'000'000;
        return std::chrono::seconds(std::clamp<std::int64_t>(seconds, 0, maxSeconds));
    }
    const std::time_t date = curl_getdate(text.c_str(), nullptr);
    if (date < 0) {
        return std::nullopt;
    }
    return std::chrono::seconds(std::max<std::time_t>(date - std::time(nullptr), 0));
}

} // namespace

bool isRepeatable(Method method) {
    return method != Method::POST && method != Method::PATCH;
}

bool isPassingStatus(int statusCode) {
    return statusCode == 429 || (statusCode >= 502 && statusCode <= 504);
}

std::optional<milliseconds> retryPause(const RetrySettings& settings, int retry,
                                       const HeaderFields& fields, std::uint64_t seed) {
    if (const auto asked = retryAfter(fields)) {
        return *asked <= settings.maxPause ? asked : std::nullopt;
    }
    constexpr int maxDoublings = 20;
    const auto whole = std::min(settings.maxPause,
                                settings.firstPause * (1 << std::clamp(retry, 0, maxDoublings)));
    static const std::uint64_t ofThisProcess = std::random_device()();
    std::mt19937_64 random(ofThisProcess + seed * 31 + static_cast<std::uint64_t>(retry));
    std::uniform_real_distribution<double> part(0.5, 1.0);
    return std::chrono::duration_cast<milliseconds>(whole * part(random));
}

} // namespace KeloAPI
