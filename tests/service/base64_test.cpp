#include "service/http/Base64.hpp"

#include <gtest/gtest.h>

#include <string>

namespace {

using KeloService::decodeBase64;
using KeloService::encodeBase64;

TEST(Base64, WritesTheKnownTexts) {
    EXPECT_EQ(encodeBase64(""), "");
    EXPECT_EQ(encodeBase64("f"), "Zg==");
    EXPECT_EQ(encodeBase64("fo"), "Zm8=");
    EXPECT_EQ(encodeBase64("foo"), "Zm9v");
    EXPECT_EQ(encodeBase64("foob"), "Zm9vYg==");
}

TEST(Base64, ReadsWhatItWrote) {
    std::string bytes;
    for (int length = 0; length < 300; ++length) {
        EXPECT_EQ(decodeBase64(encodeBase64(bytes)), bytes);
        bytes += static_cast<char>(length * 89);
    }
}

TEST(Base64, RefusesWhatIsNone) {
    EXPECT_FALSE(decodeBase64("Zg"));
    EXPECT_FALSE(decodeBase64("Zg="));
    EXPECT_FALSE(decodeBase64("Z*=="));
    EXPECT_FALSE(decodeBase64(" Zg=="));
    EXPECT_FALSE(decodeBase64("Zg==\n"));
    EXPECT_FALSE(decodeBase64("Zm9vZ"));
}

} // namespace
