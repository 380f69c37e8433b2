#include "service/media/MediaLibrary.hpp"
#include "service/media/Scene.hpp"
#include "support/Mp4Reader.hpp"

#include <gtest/gtest.h>
#include <zlib.h>

#include <map>

namespace KeloServiceTest {
namespace {

const Bytef* zlibBytes(std::string_view text) {
    return reinterpret_cast<const Bytef*>(text.data());
}

/// The chunks of a PNG file by kind; every checksum is looked at.
std::map<std::string, std::string> readChunks(std::string_view file) {
    std::map<std::string, std::string> chunks;
    EXPECT_EQ(file.substr(0, 8), "\x89PNG\r\n\x1A\n");
    file.remove_prefix(8);
    while (!file.empty()) {
        const std::size_t size = readNumber(file, 0, 4);
        const std::string_view checked = file.substr(4, 4 + size);
        EXPECT_EQ(readNumber(file, 8 + size, 4),
                  crc32(0, zlibBytes(checked), static_cast<uInt>(checked.size())));
        chunks.emplace(checked.substr(0, 4), checked.substr(4));
        file.remove_prefix(12 + size);
    }
    return chunks;
}

TEST(Image, IsTheScenesFirstMoment) {
    constexpr std::size_t side = 160;
    const KeloService::Media image = KeloService::makeImage(7, side);
    EXPECT_EQ(image.contentType, "image/png");
    auto chunks = readChunks(image.bytes);
    EXPECT_EQ(chunks.size(), 3U);
    EXPECT_TRUE(chunks.contains("IEND"));
    const std::string& header = chunks["IHDR"];
    ASSERT_EQ(header.size(), 13U);
    EXPECT_EQ(readNumber(header, 0, 4), side);
    EXPECT_EQ(readNumber(header, 4, 4), side);
    EXPECT_EQ(readNumber(header, 8, 5), 0x0802000000U); // eight bits, three colours

    std::string rows(side * (side * 3 + 1), '\0');
    uLongf size = rows.size();
    ASSERT_EQ(uncompress(reinterpret_cast<Bytef*>(rows.data()), &size, zlibBytes(chunks["IDAT"]),
                         chunks["IDAT"].size()),
              Z_OK);
    ASSERT_EQ(size, rows.size());
    std::string pixels;
    for (std::size_t y = 0; y < side; ++y) {
        EXPECT_EQ(rows[y * (side * 3 + 1)], 0);
        pixels += rows.substr(y * (side * 3 + 1) + 1, side * 3);
    }
    EXPECT_TRUE(pixels == KeloService::Scene(7).pixels(side, 0));
}

TEST(Image, DiffersBetweenSeedsAndNeverOtherwise) {
    EXPECT_EQ(KeloService::makeImage(7, 64).bytes, KeloService::makeImage(7, 64).bytes);
    EXPECT_NE(KeloService::makeImage(7, 64).bytes, KeloService::makeImage(8, 64).bytes);
}

} // namespace
} // namespace KeloServiceTest
