#include "NginxTest.hpp"
#include "support/FrameConnection.hpp"
#include "support/RawServer.hpp"
#include "TransportTest.hpp"

#include <atomic>
#include <cstdint>
#include <semaphore>

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

class GoAwayTest : public TransportTest {
protected:
    GoAwayTest() { FrameConnection::offer(_context.get()); }

    using Handler = std::function<void(FrameConnection&)>;

    /// Handles the first connection so, and each further one so, too, or by answering.
    void serve(const Handler& handler, bool handlesAll = false) {
        _server.reset(); // a connection to it may still come about
        connections = 0;
        taken = 0;
        _server = std::make_unique<RawServer>(_context, [=, this](RawConnection& raw) {
            const bool isHandled = ++connections == 1 || handlesAll;
            FrameConnection connection(raw);
            isHandled ? handler(connection) : answerAll(connection);
        });
    }

    void answerAll(FrameConnection& connection) {
        for (auto stream = connection.readRequest(); stream != 0;
             stream = connection.readRequest()) {
            ++taken;
            connection.answer(stream);
        }
    }

    /// What comes of so many requests at once.
    std::vector<Observer> sent(Method method, std::size_t count) {
        const auto pinned = transport();
        auto request = get(_server->url("/", "https"));
        request.method = method;
        request.timeoutInterval = 2 * timeLimit; // none is left lying until it times out
        auto observers = startMany(*pinned, request, count);
        for (const Observer& observer : observers) {
            EXPECT_TRUE(observer->wait());
        }
        return observers;
    }
    Observer sent(Method method) { return sent(method, 1).front(); }
    /// The same of a GET, heard by this observer.
    Observer sent(const Observer& observer) {
        return send(*transport(), get(_server->url("/", "https")), observer);
    }

    static constexpr std::size_t all = 3;

    /// Reads as many requests; the first one's stream.
    std::uint32_t readAll(FrameConnection& connection) {
        const std::uint32_t first = connection.readRequest();
        EXPECT_NE(first, 0U);
        for (std::size_t i = 1; i < all; ++i) {
            EXPECT_NE(connection.readRequest(), 0U);
        }
        taken += all;
        return first;
    }

    std::atomic<int> connections = 0;
    std::atomic<std::size_t> taken = 0;

private:
    std::shared_ptr<CurlTransport> transport() const {
        return pinning("127.0.0.1", {_certificate.certificate()});
    }

    TestCertificate _certificate = TestCertificate::selfSigned({});
    std::shared_ptr<SSL_CTX> _context = _certificate.serverContext();
    std::unique_ptr<RawServer> _server; // goes before what its connections use
};

TEST_F(GoAwayTest, OnlyWhatWasNotProcessedIsSentAgainUnlessItIsAnAction) {
    for (const bool mayBeProcessed : {false, true}) {
        for (const bool closesAtOnce : {true, false}) {
            for (const std::uint32_t error : {0U, 1U, 11U}) {
                for (const Method method : {Method::GET, Method::POST}) {
                    SCOPED_TRACE(::testing::Message()
                                 << mayBeProcessed << closesAtOnce << error << name(method));
                    serve([=](FrameConnection& connection) {
                        const std::uint32_t stream = connection.readRequest();
                        connection.goAway(mayBeProcessed ? stream : 0, error);
                        // Else the client waits for the response.
                        if (!closesAtOnce && !mayBeProcessed) {
                            connection.waitForClose();
                        }
                    });
                    const auto heard = sent(method);
                    const bool isSentAgain = method == Method::GET && !mayBeProcessed;
                    EXPECT_TRUE(isSentAgain ? succeeded(heard)
                                            : failedWith(heard, HTTPErrorCode::ConnectionLost));
                    EXPECT_EQ(connections, isSentAgain ? 2 : 1);
                }
            }
        }
    }
}

TEST_F(GoAwayTest, OfSeveralRequestsOnlyThoseThatWereNotProcessedAreSentAgain) {
    for (const bool processesFirst : {false, true}) {
        serve([&](FrameConnection& connection) {
            const std::uint32_t first = readAll(connection);
            connection.goAway(processesFirst ? first : 0, 0);
            if (processesFirst) {
                connection.answer(first);
            }
            connection.waitForClose();
        });
        expectAllSucceeded(sent(Method::GET, all));
        EXPECT_EQ(taken, all + all - (processesFirst ? 1 : 0));
    }
}

TEST_F(GoAwayTest, ActionsThatTheServerHasTakenAreNotSentAgain) {
    // The server has read and may have done them all when it makes a mistake, or just closes.
    for (const bool breaks : {true, false}) {
        serve([&](FrameConnection& connection) {
            readAll(connection);
            if (breaks) {
                connection.breakProtocol();
            }
        });
        for (const Observer& observer : sent(Method::POST, all)) {
            EXPECT_TRUE(failedWith(observer, HTTPErrorCode::ConnectionLost)) << breaks;
        }
        EXPECT_EQ(taken, all) << breaks;
    }
}

TEST_F(GoAwayTest, AResponseThatHasBegunIsNotMixedWithAnother) {
    std::binary_semaphore begun{0};
    const auto handle = [&](FrameConnection& connection) {
        using Frames = FrameConnection;
        if (connections > 1) { // which speaks HTTP/1.1, as libcurl was told
            connection.connection().write(okResponse("other"));
            connection.waitForClose();
            return;
        }
        const std::uint32_t stream = connection.readRequest();
        connection.write(Frames::Headers, Frames::endOfHeaders, stream, Frames::status200);
        connection.write(Frames::Data, 0, stream, "half");
        EXPECT_TRUE(begun.try_acquire_for(timeLimit));
        connection.write(Frames::ResetStream, 0, stream, Frames::number(13)); // wants HTTP/1.1
        connection.waitForClose();
    };
    serve(handle, true);
    const auto observer = std::make_shared<RecordingObserver>();
    observer->onData = [&begun] {
        begun.release();
        return true;
    };
    EXPECT_TRUE(failedWith(sent(observer), HTTPErrorCode::ConnectionLost));
    EXPECT_EQ(observer->body, "half");
}

TEST_F(GoAwayTest, AServerThatAlwaysGoesAwayIsGivenUp) {
    const auto goAway = [](FrameConnection& connection) {
        connection.readRequest();
        connection.goAway(0, 0);
    };
    serve(goAway, true);
    EXPECT_TRUE(failedWith(sent(Method::GET), HTTPErrorCode::ConnectionLost));
    EXPECT_LE(connections, 10);
}

} // namespace
} // namespace KeloAPI::testing
