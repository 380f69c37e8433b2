#include <KeloAPI/endpoints/internal/decimalText.hpp>

#include <array>
#include <charconv>

namespace KeloAPI {

std::string decimalText(double value) {
    // The longest is the smallest denormal number: "-0." and 324 digits behind it.
    std::array<char, 400> buffer{};
    const auto end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed)
            .ptr;
    std::string text(buffer.data(), end);
    if (text.find('.') == std::string::npos) {
        text += ".0";
    }
    return text;
}

} // namespace KeloAPI
