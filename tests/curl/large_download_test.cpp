#include "support/GetRequest.hpp"
#include "support/Nginx.hpp"
#include "support/Sanitizers.hpp"
#include "support/TemporaryFolder.hpp"
#include "TransportTest.hpp"

#include <KeloAPI/http/Manager.hpp>
#include <KeloAPI/queues/MainQueue.hpp>

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

TEST(LargeDownload, OfMoreThanFourGiBKeepsTheMemoryFlat) {
    if (!Nginx::isInstalled()) {
        GTEST_SKIP() << "nginx is not installed";
    }
    if (isSanitized) {
        GTEST_SKIP() << "a sanitized program takes minutes for it";
    }
    const TemporaryFolder folder;
    if (std::filesystem::space(folder.path()).available < fourGiB + (fourGiB >> 2U)) {
        GTEST_SKIP() << "there is no room for it";
    }
    const auto leaf = TestCertificate::selfSigned({});
    const Nginx nginx(leaf);
    ASSERT_TRUE(nginx.isServing());
    // A file with holes, which takes no room, and an end to be recognised by.
    const auto served = nginx.files() / "large.mp4";
    std::ofstream(served, std::ios::binary) << "start";
    std::filesystem::resize_file(served, fourGiB);
    std::ofstream(served, std::ios::binary | std::ios::app) << "end";

    Manager manager(
        ServerTrustPolicyManager({{"localhost", PinCertificates{{leaf.certificate()}}}}));
    const URL destination = URL::fileURL(folder.path("large.mp4"));
    std::int64_t received = 0;
    std::int64_t expected = 0;
    bool done = false;
    const auto request = manager.download(GetRequest(URL::parse(nginx.url("/files/large.mp4"))),
                                          [&](const HTTPResponse&) { return destination; });
    const long before = peakKilobytes();
    request->progress([&](std::int64_t, std::int64_t total, std::int64_t all) {
        received = total;
        expected = all;
    });
    request->response([&](const ResponseContent& content, Timeline) -> Request::Completion {
        EXPECT_FALSE(content.error) << content.error->description();
        return [&] { done = true; };
    });
    ASSERT_TRUE(MainQueue::main().runUntil([&] { return done; }, std::chrono::minutes(3)));
    EXPECT_EQ(received, static_cast<std::int64_t>(fourGiB + 3));
    EXPECT_EQ(expected, received);
    EXPECT_EQ(std::filesystem::file_size(folder.path("large.mp4")), fourGiB + 3);
    std::ifstream file(folder.path("large.mp4"), std::ios::binary);
    file.seekg(-4, std::ios::end);
    std::string end(4, ' ');
    file.read(end.data(), 4);
    EXPECT_EQ(end, std::string("\0end", 4));
    EXPECT_LT(peakKilobytes() - before, 16 * 1024);
}

} // namespace
} // namespace KeloAPI::testing
