#include <KeloAPI/api/Certificates.hpp>
#include <KeloAPI/api/internal/Base64.hpp>
#include <KeloAPI/api/internal/ScrambledCertificates.hpp>
#include <KeloAPI/Settings.hpp>

#include <algorithm>
#include <charconv>

namespace KeloAPI {

std::vector<Certificate> Certificates::chain() {
    return certificates(Settings::certificates);
}

std::optional<std::string> decoded(std::string_view scrambled) {
    constexpr int radix = 16;
    std::string text;
    while (!scrambled.empty()) {
        const std::string_view group = scrambled.substr(0, scrambled.find(' '));
        scrambled.remove_prefix(std::min(group.size() + 1, scrambled.size()));
        unsigned number = 0;
        const auto end = group.data() + group.size();
        const auto [stopped, failed] = std::from_chars(group.data(), end, number, radix);
        if (failed != std::errc() || stopped != end || number > 127) {
            return std::nullopt;
        }
        const auto key = (90U + 7U * static_cast<unsigned>(text.size())) & 127U;
        text += static_cast<char>(number ^ key);
    }
    return text.empty() ? std::nullopt : std::optional(std::move(text));
}

std::vector<Certificate> certificates(std::span<const std::string_view> scrambled) {
    std::vector<Certificate> chain;
    for (const std::string_view entry : scrambled) {
        const auto base64 = decoded(entry);
        auto der = base64 ? base64Decoded(*base64) : std::nullopt;
        if (!der) {
            continue;
        }
        if (auto certificate = Certificate::fromDER(Data(*std::move(der)))) {
            chain.push_back(*std::move(certificate));
        }
    }
    return chain;
}

} // namespace KeloAPI
