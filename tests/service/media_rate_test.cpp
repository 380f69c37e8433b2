#include "support/TestService.hpp"

#include <chrono>
#include <future>

namespace KeloServiceTest {
namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

class MediaRateTest : public ServiceTest {
protected:
    void setRate(std::int64_t bytesPerSecond) {
        EXPECT_EQ(control("POST", "/_service/media-rate", {{"bytesPerSecond", bytesPerSecond}})
                      .at("bytesPerSecond"),
                  bytesPerSecond);
    }
    /// How long the video takes, and its bytes.
    std::pair<double, std::size_t> fetch(const std::string& where) {
        const auto before = Clock::now();
        const auto result = client.Get(where);
        const Seconds time = Clock::now() - before;
        EXPECT_TRUE(result && result->status == 200);
        return {time.count(), result ? result->body.size() : 0};
    }
    /// A connection on which the video has begun to arrive.
    RawClient begin(const std::string& where) {
        RawClient raw = rawClient();
        raw.send("GET " + where + " HTTP/1.1\r\nConnection: close\r\n\r\n");
        EXPECT_TRUE(raw.readAll(300).bytes.starts_with("HTTP/1.1 200"));
        return raw;
    }
};

TEST_F(MediaRateTest, DecidesHowLongAFileTakes) {
    const std::string where = videoPath();
    const std::size_t size = fetch(where).second;
    for (const double seconds : {0.5, 1.0}) {
        const double rate = static_cast<double>(size) / seconds;
        setRate(static_cast<std::int64_t>(rate));
        const auto [time, sameSize] = fetch(where);
        EXPECT_EQ(sameSize, size);
        // The last of twenty slices per second need not be waited for.
        EXPECT_GT(time, seconds - 0.15);
        EXPECT_LT(time, 4 * seconds + 2);
    }
}

TEST_F(MediaRateTest, ArrivesBitByBit) {
    const std::string where = videoPath();
    setRate(20000);
    std::size_t received = 0;
    int steps = 0;
    const auto result = client.Get(where, [&](const char*, std::size_t count) {
        received += count;
        return ++steps < 6;
    });
    EXPECT_FALSE(result);
    EXPECT_EQ(steps, 6);
    EXPECT_LT(received, 20000U);
}

TEST_F(MediaRateTest, HoldsForSmallAnswersInARow) {
    const std::string where = videoPath();
    setRate(10000);
    const auto before = Clock::now();
    for (int i = 0; i < 4; ++i) {
        const auto part = client.Get(where, {{"Range", "bytes=0-999"}});
        EXPECT_EQ(part->status, 206);
    }
    // 4000 bytes, of which the last slice need not be waited for.
    EXPECT_GT(Seconds(Clock::now() - before).count(), 0.3);
}

TEST_F(MediaRateTest, HoldsUpNothingElse) {
    const std::string where = videoPath();
    setRate(1);
    const RawClient slow = begin(where);
    EXPECT_EQ(data("/users/me").at("username"), "mara");
    EXPECT_EQ(get("/timelines/all?size=100")->status, 200);
    EXPECT_EQ(client.Get("/media/nothing")->status, 404);
    const auto before = Clock::now();
    service.stop();
    EXPECT_LT(Seconds(Clock::now() - before).count(), 5);
}

TEST_F(MediaRateTest, ChangesWhileAFileIsBeingSent) {
    const std::string where = videoPath();
    const std::size_t size = fetch(where).second;
    setRate(100);
    RawClient raw = rawClient();
    raw.send("GET " + where + " HTTP/1.1\r\nConnection: close\r\n\r\n");
    auto received = std::async(std::launch::async, [&raw] { return raw.readAll(); });
    EXPECT_EQ(received.wait_for(std::chrono::milliseconds(300)), std::future_status::timeout);
    const auto before = Clock::now();
    setRate(0);
    EXPECT_GT(received.get().bytes.size(), size);
    // At the rate it began with it would have taken longer than a minute.
    EXPECT_GT(size, 6000U);
    EXPECT_LT(Seconds(Clock::now() - before).count(), 10);
}

TEST_F(MediaRateTest, LetsFaultsCutIn) {
    const std::string where = videoPath();
    setRate(10000);
    addFault({{"match", {{"path", where}}}, {"action", {{"type", "close"}, {"afterBytes", 5000}}}});
    RawClient raw = rawClient();
    const auto before = Clock::now();
    raw.send("GET " + where + " HTTP/1.1\r\n\r\n");
    EXPECT_EQ(raw.readAll().bytes.size(), 5000U);
    EXPECT_GT(Seconds(Clock::now() - before).count(), 0.4);
}

} // namespace
} // namespace KeloServiceTest
