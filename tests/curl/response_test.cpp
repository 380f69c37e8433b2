#include "support/GetRequest.hpp"
#include "support/MainLoop.hpp"
#include "support/RawServer.hpp"
#include "support/TemporaryFolder.hpp"
#include "TransportTest.hpp"

#include <KeloAPI/curl/internal/ResponseHead.hpp>
#include <KeloAPI/http/Manager.hpp>

#include <zlib.h>

namespace KeloAPI::testing {
namespace {

std::string gzip(const std::string& text) {
    z_stream stream{};
    deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
    std::string packed(deflateBound(&stream, text.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    deflate(&stream, Z_FINISH);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

class ResponseTest : public TransportTest {
protected:
    /// What the transport makes of these bytes as an answer on a connection that then closes.
    Observer answeredWith(const std::string& bytes, Method method = Method::GET,
                          bool abruptly = false) {
        RawServer server([&](RawConnection& connection) {
            connection.readRequest();
            connection.write(bytes);
            if (abruptly) {
                connection.reset();
            }
        });
        auto request = get(server.url("/"));
        request.method = method;
        return send(*transport, request);
    }

    std::shared_ptr<CurlTransport> transport = unpinned();
};

TEST_F(ResponseTest, HeadIsReportedWithEveryField) {
    const auto heard =
        answeredWith("HTTP/1.1 404 Not Found\r\nX-One: a\r\nx-two:b  \r\nX-Empty:\r\n"
                     "X-One: c\r\nContent-Length: 3\r\n\r\nabc");
    EXPECT_TRUE(succeeded(heard, 404));
    const HTTPResponse& response = heard->responses.front();
    const HeaderFields expected = {
        {"X-One", "a, c"}, {"X-Two", "b"}, {"X-Empty", ""}, {"Content-Length", "3"}};
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), response.headerFields.begin(),
                           response.headerFields.end(), [](const auto& a, const auto& b) {
                               const HeaderNameLess less;
                               return !less(a.first, b.first) && !less(b.first, a.first) &&
                                      a.second == b.second;
                           }));
    EXPECT_EQ(response.expectedContentLength, 3);
    EXPECT_EQ(heard->body, "abc");
}

TEST_F(ResponseTest, ChunkedBodyHasNoLengthBeforehand) {
    const auto heard = answeredWith("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                                    "3\r\nabc\r\n2\r\nde\r\n0\r\nX-Trailer: t\r\n\r\n");
    EXPECT_TRUE(succeeded(heard));
    EXPECT_EQ(heard->body, "abcde");
    EXPECT_EQ(heard->responses.front().expectedContentLength, -1);
    EXPECT_FALSE(heard->responses.front().headerFields.contains("X-Trailer"));
}

TEST_F(ResponseTest, BodyMayEndWithTheConnection) {
    const auto heard = answeredWith("HTTP/1.1 200 OK\r\n\r\nto the end");
    EXPECT_TRUE(succeeded(heard));
    EXPECT_EQ(heard->body, "to the end");
    EXPECT_EQ(heard->responses.front().expectedContentLength, -1);
}

TEST_F(ResponseTest, CompressedBodyArrivesUnpacked) {
    const std::string text(100'000, 'z');
    const std::string packed = gzip(text);
    const auto heard =
        answeredWith("HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: " +
                     std::to_string(packed.size()) + "\r\n\r\n" + packed);
    EXPECT_TRUE(succeeded(heard));
    EXPECT_EQ(heard->body, text);
    EXPECT_EQ(heard->responses.front().expectedContentLength, -1);
}

TEST_F(ResponseTest, ABodyThatIsNotWhatItsEncodingSaysIsNoAnswer) {
    const auto heard = answeredWith(
        "HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: 8\r\n\r\nnot gzip");
    EXPECT_TRUE(failedWith(heard, HTTPErrorCode::BadServerResponse));
}

TEST_F(ResponseTest, APackedBodyThatIsCutShortIsNoAnswer) {
    const std::string packed = gzip(std::string(100'000, 'z') + "end");
    // Within the header, the data and the trailer.
    for (const std::size_t size : {std::size_t{1}, packed.size() / 2, packed.size() - 1}) {
        SCOPED_TRACE(size);
        const auto heard = answeredWith(
            "HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: " + std::to_string(size) +
            "\r\n\r\n" + packed.substr(0, size));
        EXPECT_TRUE(failedWith(heard, HTTPErrorCode::BadServerResponse));
    }
}

TEST_F(ResponseTest, APackedBodyThatIsCutShortIsNoFile) {
    const std::string half = gzip(std::string(100'000, 'z')).substr(0, 60);
    RawServer server([&half](RawConnection& connection) {
        connection.readRequest();
        connection.write("HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: 60\r\n\r\n" +
                         half);
    });
    const TemporaryFolder folder;
    Manager manager(transport);
    std::optional<Error> error;
    bool ended = false;
    manager.download(GetRequest(URL::parse(server.url("/"))), URL::fileURL(folder.path("video")))
        ->response([&](const ResponseContent& content, Timeline) {
            return [&, failure = content.error] {
                error = failure;
                ended = true;
            };
        });
    ASSERT_TRUE(runUntil([&] { return ended; }));
    EXPECT_TRUE(error && isHTTPError(*error, HTTPErrorCode::BadServerResponse));
    EXPECT_TRUE(folder.names().empty());
}

TEST_F(ResponseTest, APackedBodyMayHaveSeveralMembersButNoGarbage) {
    const auto answered = [this](const std::string& body) {
        return answeredWith("HTTP/1.1 200 OK\r\nContent-Encoding: X-GZIP\r\nContent-Length: " +
                            std::to_string(body.size()) + "\r\n\r\n" + body);
    };
    const auto two = answered(gzip("one, ") + gzip("two"));
    EXPECT_TRUE(succeeded(two));
    EXPECT_EQ(two->body, "one, two");
    EXPECT_TRUE(failedWith(answered(gzip("one") + "and more"), HTTPErrorCode::BadServerResponse));
    const auto none = answered("");
    EXPECT_TRUE(succeeded(none));
    EXPECT_EQ(none->body, "");
}

TEST_F(ResponseTest, OnlyTheEncodingThatWasOfferedIsTaken) {
    for (const char* encoding : {"br", "gzip, gzip", "unheard-of"}) {
        const auto heard =
            answeredWith("HTTP/1.1 200 OK\r\nContent-Encoding: " + std::string(encoding) +
                         "\r\nContent-Length: 3\r\n\r\nabc");
        EXPECT_TRUE(failedWith(heard, HTTPErrorCode::BadServerResponse)) << encoding;
    }
    const auto plain = answeredWith("HTTP/1.1 200 OK\r\nContent-Encoding: Identity\r\n\r\nabc");
    EXPECT_TRUE(succeeded(plain));
    EXPECT_EQ(plain->body, "abc");
}

TEST_F(ResponseTest, AnswersWithoutBody) {
    const auto noContent = answeredWith("HTTP/1.1 204 No Content\r\n\r\n");
    EXPECT_TRUE(succeeded(noContent, 204));
    EXPECT_EQ(noContent->body, "");
    const auto head = answeredWith("HTTP/1.1 200 OK\r\nContent-Length: 99\r\n\r\n", Method::HEAD);
    EXPECT_TRUE(succeeded(head));
    EXPECT_EQ(head->body, "");
    EXPECT_EQ(head->responses.front().expectedContentLength, 99);
    EXPECT_TRUE(succeeded(answeredWith("HTTP/1.1 304 Not Modified\r\n\r\n"), 304));
}

TEST_F(ResponseTest, InterimAnswersArePassedOver) {
    const auto heard = answeredWith("HTTP/1.1 103 Early Hints\r\nLink: </a>\r\n\r\n"
                                    "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok");
    EXPECT_TRUE(succeeded(heard));
    EXPECT_FALSE(heard->responses.front().headerFields.contains("Link"));
    EXPECT_EQ(heard->body, "ok");
}

TEST_F(ResponseTest, BytesThatAreNoHTTP) {
    EXPECT_TRUE(
        failedWith(answeredWith("SSH-2.0-OpenSSH_9.2\r\n"), HTTPErrorCode::BadServerResponse));
    EXPECT_TRUE(
        failedWith(answeredWith("HTTP/7.5 200 OK\r\n\r\n"), HTTPErrorCode::BadServerResponse));
    EXPECT_TRUE(
        failedWith(answeredWith(std::string(4096, '\0')), HTTPErrorCode::BadServerResponse));
}

TEST_F(ResponseTest, AHeadWithoutEndIsGivenUp) {
    std::string head = "HTTP/1.1 200 OK\r\n";
    for (int i = 0; i < 5000; ++i) {
        head += "X-" + std::to_string(i) + ": " + std::string(100, 'x') + "\r\n";
    }
    const auto heard = answeredWith(head);
    ASSERT_TRUE(heard->error);
    EXPECT_TRUE(heard->responses.empty());
    EXPECT_TRUE(failedWith(heard, HTTPErrorCode::BadServerResponse));
}

TEST_F(ResponseTest, ALineWithoutEndIsGivenUp) {
    for (const char* start : {"HTTP/1.1 200 ", "HTTP/1.1 200 OK\r\nX-Long: "}) {
        const auto heard = answeredWith(start + std::string(300'000, 'x') + "\r\n\r\n");
        ASSERT_TRUE(failedWith(heard, HTTPErrorCode::BadServerResponse));
        EXPECT_EQ(heard->error->localizedDescription(), "the answer's head is too long");
    }
}

TEST_F(ResponseTest, TrailersCountAsPartOfTheHead) {
    const auto answered = [this](const std::string& trailers) {
        return answeredWith(
            "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nab\r\n0\r\n" + trailers +
            "\r\n");
    };
    std::string trailers;
    for (int i = 0; i < 400; ++i) {
        trailers += "X-" + std::to_string(i) + ": " + std::string(2500, 'x') + "\r\n";
    }
    EXPECT_TRUE(succeeded(answered(trailers.substr(0, trailers.find("X-10:")))));
    const auto heard = answered(trailers);
    ASSERT_TRUE(failedWith(heard, HTTPErrorCode::BadServerResponse));
    EXPECT_EQ(heard->error->localizedDescription(), "the answer's head is too long");
    EXPECT_TRUE(failedWith(answered("X-Long: " + std::string(300'000, 'x') + "\r\n"),
                           HTTPErrorCode::BadServerResponse));
}

TEST_F(ResponseTest, ChunksThatCannotBeReadAreNoHTTP) {
    EXPECT_TRUE(failedWith(
        answeredWith("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nnot hex\r\nab\r\n"),
        HTTPErrorCode::BadServerResponse));
}

TEST_F(ResponseTest, AConnectionThatBreaksOffIsLost) {
    EXPECT_TRUE(failedWith(answeredWith(""), HTTPErrorCode::ConnectionLost));
    EXPECT_TRUE(
        failedWith(answeredWith("HTTP/1.1 200 OK\r\nContent-Le"), HTTPErrorCode::ConnectionLost));
    const auto cut = answeredWith("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nhalf");
    EXPECT_TRUE(failedWith(cut, HTTPErrorCode::ConnectionLost));
    EXPECT_EQ(cut->body, "half");
    EXPECT_TRUE(
        failedWith(answeredWith("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nab"),
                   HTTPErrorCode::ConnectionLost));
    EXPECT_TRUE(failedWith(
        answeredWith("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nhalf", Method::GET, true),
        HTTPErrorCode::ConnectionLost));
}

TEST_F(ResponseTest, AReceiverThatGivesUpEndsTheExchange) {
    RawServer server([](RawConnection& connection) {
        connection.readRequest();
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nsome");
        connection.waitForClose();
    });
    auto observer = std::make_shared<RecordingObserver>();
    observer->onData = [] { return false; };
    transport->start(get(server.url("/")), observer);
    ASSERT_TRUE(observer->wait());
    EXPECT_TRUE(failedWith(observer, HTTPErrorCode::Unknown));
    EXPECT_EQ(observer->error->localizedDescription(), "the receiver gave up");
}

TEST(ResponseHeadTest, LengthIsOnlyWhatTheHeadSaysPlainly) {
    const auto length = [](const std::string& fields) {
        ResponseHead head;
        head.take("HTTP/2 200 \r\n");
        for (std::size_t at = 0; at < fields.size();) {
            const auto end = fields.find('\n', at) + 1;
            head.take(fields.substr(at, end - at));
            at = end;
        }
        EXPECT_EQ(head.take("\r\n"), ResponseHead::Progress::Finished);
        return head.expectedContentLength();
    };
    EXPECT_EQ(length("content-length: 12\r\n"), 12);
    EXPECT_EQ(length("content-length: 0\r\n"), 0);
    EXPECT_EQ(length("content-length: -3\r\n"), -1);
    EXPECT_EQ(length("content-length: 12x\r\n"), -1);
    EXPECT_EQ(length("content-length: 99999999999999999999\r\n"), -1);
    EXPECT_EQ(length("content-length: 12\r\ncontent-encoding: br\r\n"), -1);
    EXPECT_EQ(length("content-length: 12\r\ncontent-encoding: identity\r\n"), 12);
    EXPECT_EQ(length(""), -1);
}

TEST(ResponseHeadTest, AFoldedFieldIsOneValue) {
    ResponseHead head;
    head.take("HTTP/1.1 200 OK\r\n");
    head.take("X-Long: a\r\n");
    head.take("  b\r\n");
    EXPECT_EQ(head.fields().find("x-long")->second, "a b");
}

} // namespace
} // namespace KeloAPI::testing
