#pragma once

#include <KeloAPI/json/Json.hpp>

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace KeloAPI::testing {

/// Whether the text is read, with and without the spare room that saves the reader a copy.
inline bool accepts(std::string_view text) {
    std::string tight(text);
    tight.shrink_to_fit();
    std::string roomy;
    roomy.reserve(text.size() + 128);
    roomy.append(text);
    const bool accepted = static_cast<bool>(JsonDocument::parse(tight));
    EXPECT_EQ(static_cast<bool>(JsonDocument::parse(roomy)), accepted) << text;
    return accepted;
}

/// Whether the text is read beside a number that neither 64-bit integers nor doubles hold, which is
/// read another way, on either side of it.
inline bool acceptsBesideALargeNumber(const std::string& text) {
    const auto reads = [](const std::string& first, const std::string& second) {
        const std::string both = R"({"a":)" + first + R"(,"b":)" + second + "}";
        return static_cast<bool>(JsonDocument::parse(both));
    };
    const bool accepted = reads("1e400", text);
    EXPECT_EQ(reads(text, "1e400"), accepted) << text;
    EXPECT_EQ(reads("18446744073709551616", text), accepted) << text;
    EXPECT_EQ(reads(text, "18446744073709551616"), accepted) << text;
    return accepted;
}

} // namespace KeloAPI::testing
