#include "NginxTest.hpp"

#include <atomic>

namespace KeloAPI::testing {
namespace {

class HTTP2Test : public NginxTest {
protected:
    struct Started {
        Observer observer;
        std::shared_ptr<Exchange> exchange;
    };

    /// Starts slow requests together. `whenBegun` runs once the responses to all have begun.
    void startSlow(
        std::size_t count, const std::function<void()>& whenBegun = [] {}) {
        for (std::size_t i = 0; i < count; ++i) {
            const auto observer = std::make_shared<RecordingObserver>();
            observer->onResponse = [this, count, whenBegun] {
                if (++begun == count) {
                    whenBegun();
                }
            };
            observer->onComplete = [this, observer = observer.get()] {
                const std::lock_guard lock(mutex);
                ended.push_back({observer, begun});
            };
            auto exchange = transport->start(get(nginx->url("/slow")), observer);
            const std::lock_guard lock(mutex);
            slow.push_back({observer, std::move(exchange)});
        }
    }

    void expectWhole(const Observer& observer) const {
        ASSERT_TRUE(observer->wait());
        ASSERT_TRUE(succeeded(observer));
        EXPECT_EQ(observer->body, nginx->slowBody());
        EXPECT_EQ(field(observer, "X-Connection"), field(slow[0].observer, "X-Connection"));
    }

    static std::string field(const Observer& observer, std::string_view name) {
        const auto& fields = observer->responses.at(0).headerFields;
        const auto found = fields.find(name);
        return found == fields.end() ? "" : found->second;
    }

    struct End {
        RecordingObserver* observer;
        std::size_t begunBefore;
    };

    std::mutex mutex;
    std::vector<Started> slow;
    std::vector<End> ended;
    std::atomic<std::size_t> begun = 0;
    std::shared_ptr<CurlTransport> transport = pinning("localhost", {leaf.certificate()});
};

TEST_F(HTTP2Test, SixtyFourRequestsInFlightShareAConnection) {
    startSlow(64);
    for (const Started& each : slow) {
        expectWhole(each.observer);
    }
    EXPECT_EQ(ended.front().begunBefore, 64U) << "they were all in flight at once";
}

TEST_F(HTTP2Test, CancellingOneLeavesTheOthersAlone) {
    startSlow(16, [this] {
        const std::lock_guard lock(mutex);
        slow.at(7).exchange->cancel();
    });
    for (std::size_t i = 0; i < slow.size(); ++i) {
        ASSERT_TRUE(slow[i].observer->wait());
        if (i != 7) {
            expectWhole(slow[i].observer);
        }
    }
    EXPECT_TRUE(failedWith(slow[7].observer, HTTPErrorCode::Cancelled));
    EXPECT_EQ(ended.front().observer, slow[7].observer.get()) << "the others were under way";
    // And the connection goes on being of use.
    const auto next = send(*transport, get(nginx->url("/quick")));
    EXPECT_TRUE(succeeded(next));
    EXPECT_EQ(field(next, "X-Connection"), field(slow[0].observer, "X-Connection"));
}

TEST_F(HTTP2Test, TimeOutOfOneLeavesTheOthersAlone) {
    startSlow(1);
    auto request = get(nginx->url("/stalling"));
    request.timeoutInterval = std::chrono::milliseconds(300);
    EXPECT_TRUE(failedWith(send(*transport, request), HTTPErrorCode::TimedOut));
    expectWhole(slow[0].observer);
}

TEST_F(HTTP2Test, CarriesBodiesBothWays) {
    constexpr std::int64_t size = 2'000'000;
    std::string body(size, '\0');
    for (std::size_t i = 0; i < body.size(); ++i) {
        body[i] = static_cast<char>(i * 7 % 253);
    }
    const auto sent = send(*transport, with(Method::PUT, nginx->url("/files/upload"), body));
    EXPECT_TRUE(succeeded(sent, 201));
    ASSERT_GT(sent->sent.size(), 1U);
    std::int64_t last = 0;
    for (const auto& [bytes, total] : sent->sent) {
        EXPECT_GT(bytes, last) << "every byte counts once";
        EXPECT_EQ(total, size);
        last = bytes;
    }
    EXPECT_EQ(last, size);
    const auto back = send(*transport, get(nginx->url("/files/upload")));
    EXPECT_TRUE(succeeded(back));
    EXPECT_TRUE(back->body == body);
    EXPECT_EQ(back->responses.at(0).expectedContentLength, size);
}

TEST_F(HTTP2Test, IsSpokenWhereTheServerSpeaksItWithEmptyFieldsAndRedirects) {
    auto request = get(nginx->url("/moved"));
    request.headerFields = {{"X-Empty", ""}, {"X-Text", "t"}};
    const auto heard = send(*transport, request);
    EXPECT_TRUE(succeeded(heard));
    EXPECT_EQ(heard->body, "quick");
    EXPECT_EQ(field(heard, "x-protocol"), "HTTP/2.0");
    EXPECT_EQ(heard->responses.at(0).url.absoluteString(), nginx->url("/quick"));
    EXPECT_EQ(field(heard, "X-Echo"), "[][t]");
}

} // namespace
} // namespace KeloAPI::testing
