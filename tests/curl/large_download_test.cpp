#include "NginxTest.hpp"
#include "support/EndedRequest.hpp"
#include "support/FixedRequest.hpp"
#include "support/Sanitizers.hpp"
#include "support/TemporaryFolder.hpp"

#include <KeloAPI/http/Manager.hpp>

#include <sys/resource.h>

#include <fstream>

namespace KeloAPI::testing {
namespace {

constexpr std::uintmax_t fourGiB = std::uintmax_t{4} << 30U;

long peakKilobytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

using LargeDownloadTest = NginxTest;

TEST_F(LargeDownloadTest, OfMoreThanFourGiBKeepsTheMemoryFlat) {
    if (isSanitized) {
        GTEST_SKIP() << "a sanitized program takes minutes for it";
    }
    const TemporaryFolder folder;
    if (std::filesystem::space(folder.path()).available < fourGiB + (fourGiB >> 2U)) {
        GTEST_SKIP() << "there is no room for it";
    }
    // A file with holes, which takes no room, and an end to be recognised by.
    const auto served = nginx->files() / "large.mp4";
    std::ofstream(served, std::ios::binary) << "start";
    std::filesystem::resize_file(served, fourGiB);
    std::ofstream(served, std::ios::binary | std::ios::app) << "end";

    Manager manager(pinning("localhost", {leaf.certificate()}));
    const std::string path = folder.path("large.mp4");
    const long before = peakKilobytes();
    const auto request = manager.download(FixedRequest(nginx->url("/files/large.mp4")),
                                          [&](const HTTPResponse&) { return URL::fileURL(path); });
    std::int64_t received = 0;
    std::int64_t expected = 0;
    request->progress([&](std::int64_t, std::int64_t total, std::int64_t all) {
        received = total;
        expected = all;
    });
    const auto error = errorOf(request, std::chrono::minutes(3));
    ASSERT_FALSE(error) << error->description();
    EXPECT_EQ(received, static_cast<std::int64_t>(fourGiB + 3));
    EXPECT_EQ(expected, received);
    EXPECT_EQ(std::filesystem::file_size(path), fourGiB + 3);
    std::ifstream file(path, std::ios::binary);
    file.seekg(-4, std::ios::end);
    std::string end(4, ' ');
    file.read(end.data(), 4);
    EXPECT_EQ(end, std::string("\0end", 4));
    EXPECT_LT(peakKilobytes() - before, 16 * 1024);
}

} // namespace
} // namespace KeloAPI::testing
