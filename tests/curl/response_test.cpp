#include "support/Gzip.hpp"
#include "support/RawServer.hpp"
#include "TransportTest.hpp"

#include <KeloAPI/curl/internal/CurlErrors.hpp>
#include <KeloAPI/curl/internal/GzipDecoder.hpp>
#include <KeloAPI/curl/internal/ResponseHead.hpp>

namespace KeloAPI::testing {
namespace {

std::string chunkedResponse(const std::string& chunks) {
    return "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n" + chunks;
}

/// So many fields of 2,500 bytes.
std::string largeFields(int count) {
    std::string fields;
    for (int i = 0; i < count; ++i) {
        fields += "X-" + std::to_string(i) + ": " + std::string(2500, 'x') + "\r\n";
    }
    return fields;
}

class ResponseTest : public TransportTest {
protected:
    /// What the transport makes of these bytes as a response on a connection that then closes.
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
    const std::map<std::string, std::string> expected = {
        {"x-one", "a, c"}, {"x-two", "b"}, {"x-empty", ""}, {"content-length", "3"}};
    EXPECT_EQ(response.headerFields.size(), expected.size());
    for (const auto& [name, value] : expected) {
        const auto found = response.headerFields.find(name);
        ASSERT_NE(found, response.headerFields.end()) << name;
        EXPECT_EQ(found->second, value) << name;
    }
    EXPECT_EQ(response.expectedContentLength, 3);
    EXPECT_EQ(heard->body, "abc");
}

TEST_F(ResponseTest, BodiesArriveUnpackedWithTheLengthThatIsKnownBeforehand) {
    struct Case {
        std::string bytes;
        std::string body;
        std::int64_t length = -1;
        int status = 200;
        Method method = Method::GET;
    };
    const std::string text(100'000, 'z');
    const std::vector<Case> cases = {
        {chunkedResponse("3\r\nabc\r\n2\r\nde\r\n0\r\nX-Trailer: t\r\n\r\n"), "abcde"},
        {chunkedResponse("2\r\nab\r\n0\r\n" + largeFields(10) + "\r\n"), "ab"},
        {"HTTP/1.1 200 OK\r\n\r\nto the end", "to the end"},
        {packedResponse(gzip(text)), text},
        {packedResponse(gzip("one, ") + gzip("two"), "X-GZIP"), "one, two"},
        {packedResponse("", "X-GZIP"), ""},
        {"HTTP/1.1 200 OK\r\nContent-Encoding: Identity\r\n\r\nabc", "abc"},
        {"HTTP/1.1 204 No Content\r\n\r\n", "", -1, 204},
        {"HTTP/1.1 304 Not Modified\r\n\r\n", "", -1, 304},
        {"HTTP/1.1 200 OK\r\nContent-Length: 99\r\n\r\n", "", 99, 200, Method::HEAD},
        // An interim response is passed over.
        {"HTTP/1.1 103 Early Hints\r\nLink: </a>\r\n\r\n" + okResponse(), "ok", 2}};
    for (const Case& each : cases) {
        SCOPED_TRACE(each.bytes.substr(0, 200));
        const auto heard = answeredWith(each.bytes, each.method);
        ASSERT_TRUE(succeeded(heard, each.status));
        EXPECT_EQ(heard->body, each.body);
        const HTTPResponse& response = heard->responses.front();
        EXPECT_EQ(response.headerFields.contains("X-Trailer"), false);
        EXPECT_EQ(response.headerFields.contains("Link"), false);
        if (each.status == 200) {
            EXPECT_EQ(response.expectedContentLength, each.length);
        }
    }
}

TEST_F(ResponseTest, WhatIsNoSoundHTTPIsRefused) {
    const std::string packed = gzip(std::string(100'000, 'z') + "end");
    std::string manyFields = "HTTP/1.1 200 OK\r\n";
    for (int i = 0; i < 5000; ++i) {
        manyFields += "X-" + std::to_string(i) + ": " + std::string(100, 'x') + "\r\n";
    }
    const std::vector<std::string> cases = {
        packedResponse("not gzip"),
        // Cut within the header, the data and the trailer.
        packedResponse(packed.substr(0, 1)), packedResponse(packed.substr(0, packed.size() / 2)),
        packedResponse(packed.substr(0, packed.size() - 1)),
        packedResponse(gzip("one") + "and more", "X-GZIP"),
        packedResponse(gzip(std::string(100'000, 'z')) + "\x1f"),
        // Without the header of gzip: packed nothing, as zlib has it.
        packedResponse({"\x78\x9c\x03\0\0\0\0\x01", 8}),
        // Encodings that were not offered.
        packedResponse("abc", "br"), packedResponse("abc", "gzip, gzip"),
        packedResponse("abc", "unheard-of"),
        // No HTTP at all.
        "SSH-2.0-OpenSSH_9.2\r\n", "HTTP/7.5 200 OK\r\n\r\n", std::string(4096, '\0'),
        chunkedResponse("not hex\r\nab\r\n"), manyFields,
        // Lengths of two minds, a coding that was not offered, and another protocol.
        "HTTP/1.1 200 OK\r\nContent-Length: 2\r\nContent-Length: 3\r\n\r\nabc",
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: x-none\r\n\r\nabc",
        "HTTP/1.1 101 Switching Protocols\r\nUpgrade: x\r\n\r\n",
        chunkedResponse("2\r\nab\r\n0\r\nX-Long: " + std::string(300'000, 'x') + "\r\n\r\n")};
    for (const std::string& bytes : cases) {
        EXPECT_TRUE(failedWith(answeredWith(bytes), HTTPErrorCode::BadServerResponse))
            << bytes.substr(0, 200);
    }
    EXPECT_TRUE(answeredWith(manyFields)->responses.empty());
}

TEST_F(ResponseTest, AHeadThatIsTooLongIsSaidToBe) {
    const std::string longText(300'000, 'x');
    for (const std::string& bytes :
         {"HTTP/1.1 200 " + longText + "\r\n\r\n",
          "HTTP/1.1 200 OK\r\nX-Long: " + longText + "\r\n\r\n",
          // Trailers count as part of the head.
          chunkedResponse("2\r\nab\r\n0\r\n" + largeFields(400) + "\r\n")}) {
        const auto heard = answeredWith(bytes);
        ASSERT_TRUE(failedWith(heard, HTTPErrorCode::BadServerResponse));
        EXPECT_EQ(heard->error->localizedDescription(), "the response's head is too long");
    }
}

TEST_F(ResponseTest, AConnectionThatBreaksOffIsLost) {
    const std::string half = "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nhalf";
    for (const std::string& bytes : {std::string(), std::string("HTTP/1.1 200 OK\r\nContent-Le"),
                                     half, chunkedResponse("5\r\nab")}) {
        EXPECT_TRUE(failedWith(answeredWith(bytes), HTTPErrorCode::ConnectionLost)) << bytes;
    }
    EXPECT_EQ(answeredWith(half)->body, "half");
    EXPECT_TRUE(failedWith(answeredWith(half, Method::GET, true), HTTPErrorCode::ConnectionLost));
}

TEST_F(ResponseTest, ABodyThatEndsWithItsConnectionIsWholeOnlyWhereTLSEndsToo) {
    const auto leaf = TestCertificate::selfSigned({});
    for (const bool endsTLS : {true, false}) {
        RawServer server(leaf.serverContext(), [endsTLS](RawConnection& connection) {
            const bool isHead = connection.readRequest().starts_with("HEAD");
            connection.write("HTTP/1.1 200 OK\r\n\r\n");
            if (isHead) {
                connection.waitForClose();
                return;
            }
            connection.write("half");
            if (endsTLS) {
                SSL_shutdown(connection.session());
            }
        });
        const auto pinned = pinning("localhost", {leaf.certificate()});
        auto request = get(server.secureUrl("/"));
        const auto heard = send(*pinned, request);
        EXPECT_TRUE(endsTLS ? succeeded(heard) : failedWith(heard, HTTPErrorCode::ConnectionLost));
        request.method = Method::HEAD;
        EXPECT_TRUE(succeeded(send(*pinned, request))) << "it has no body";
    }
}

TEST_F(ResponseTest, AReceiverThatGivesUpEndsTheExchange) {
    const RawServer server(
        answeringAndWaiting("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nsome"));
    const auto observer = std::make_shared<RecordingObserver>();
    observer->onData = [] { return false; };
    send(*transport, get(server.url("/")), observer);
    EXPECT_TRUE(failedWith(observer, HTTPErrorCode::Unknown));
    EXPECT_EQ(observer->error->localizedDescription(), "the receiver gave up");
}

TEST(ResponseHeadTest, LengthIsOnlyWhatTheHeadSaysPlainly) {
    const auto length = [](const std::vector<std::string>& fields) {
        ResponseHead head(1000);
        head.take("HTTP/2 200 \r\n");
        for (const std::string& field : fields) {
            head.take(field + "\r\n");
        }
        EXPECT_EQ(head.take("\r\n"), ResponseHead::Progress::Finished);
        EXPECT_TRUE(head.expectedContentLength() < 0 || head.hasSoundFraming());
        return head.expectedContentLength();
    };
    EXPECT_EQ(length({"content-length: 12"}), 12);
    EXPECT_EQ(length({"content-length: 0"}), 0);
    EXPECT_EQ(length({"content-length: 12", "content-length: 12"}), 12);
    EXPECT_EQ(length({"content-length: 12 ,12"}), 12);
    EXPECT_EQ(length({"content-length: 12", "content-length: 13"}), -1);
    EXPECT_EQ(length({"content-length: 12,"}), -1);
    EXPECT_EQ(length({"content-length: -3"}), -1);
    EXPECT_EQ(length({"content-length: 12x"}), -1);
    EXPECT_EQ(length({"content-length: 99999999999999999999"}), -1);
    EXPECT_EQ(length({"content-length: 12", "content-encoding: br"}), -1);
    EXPECT_EQ(length({"content-length: 12", "content-encoding: identity"}), 12);
    EXPECT_EQ(length({}), -1);
}

TEST(ResponseHeadTest, AFoldedFieldIsOneValue) {
    ResponseHead head(1000);
    head.take("HTTP/1.1 200 OK\r\n");
    head.take("X-Long: a\r\n");
    head.take("  b\r\n");
    EXPECT_EQ(head.fields().find("x-long")->second, "a b");
}

TEST(ResponseHeadTest, TheLimitIsTheLongestHeadThatIsTaken) {
    const std::string statusLine = "HTTP/1.1 200 OK\r\n";
    const std::size_t size = statusLine.size() + 2;
    for (const auto& [limit, expected] : {std::pair(size, ResponseHead::Progress::Finished),
                                          std::pair(size - 1, ResponseHead::Progress::TooLong)}) {
        ResponseHead head(limit);
        EXPECT_EQ(head.take(statusLine), ResponseHead::Progress::Unfinished);
        EXPECT_EQ(head.take("\r\n"), expected);
    }
}

TEST(GzipDecoderTest, HandsOutAtOnceWhatCanBeUnpacked) {
    const std::string text(100'000, 'z');
    std::string packed = gzip(text);
    for (std::size_t size = 1; size <= packed.size(); ++size) {
        // What zlib makes of the same bytes where there is room for everything.
        z_stream roomy{};
        ASSERT_EQ(inflateInit2(&roomy, 15 + 16), Z_OK);
        std::string room(text.size(), '\0');
        roomy.next_out = reinterpret_cast<Bytef*>(room.data());
        roomy.avail_out = static_cast<uInt>(room.size());
        roomy.next_in = reinterpret_cast<Bytef*>(packed.data());
        GzipDecoder decoder;
        std::size_t handedOut = 0;
        for (std::size_t at = 0; at < packed.size(); at += size) {
            const std::string_view piece = std::string_view(packed).substr(at, size);
            roomy.avail_in = static_cast<uInt>(piece.size());
            inflate(&roomy, Z_NO_FLUSH);
            decoder.take(piece, [&](std::string_view bytes) {
                handedOut += bytes.size();
                return true;
            });
            EXPECT_EQ(handedOut, roomy.total_out) << "in pieces of " << size;
        }
        EXPECT_EQ(handedOut, text.size());
        EXPECT_TRUE(decoder.isComplete());
        inflateEnd(&roomy);
    }
}

TEST(CurlErrorsTest, CodesOfTheLibraryBelowAreNamedInOurs) {
    const std::map<HTTPErrorCode, std::vector<CURLcode>> table = {
        {HTTPErrorCode::UnsupportedURL, {CURLE_URL_MALFORMAT}},
        {HTTPErrorCode::CannotFindHost, {CURLE_COULDNT_RESOLVE_HOST, CURLE_COULDNT_RESOLVE_PROXY}},
        {HTTPErrorCode::CannotConnect, {CURLE_COULDNT_CONNECT}},
        {HTTPErrorCode::TimedOut, {CURLE_OPERATION_TIMEDOUT}},
        {HTTPErrorCode::ConnectionLost,
         {CURLE_GOT_NOTHING, CURLE_PARTIAL_FILE, CURLE_RECV_ERROR, CURLE_SEND_ERROR,
          CURLE_HTTP2_STREAM, CURLE_HTTP2}},
        {HTTPErrorCode::ServerTrust,
         {CURLE_PEER_FAILED_VERIFICATION, CURLE_SSL_CONNECT_ERROR, CURLE_SSL_CACERT_BADFILE}},
        {HTTPErrorCode::BadServerResponse,
         {CURLE_UNSUPPORTED_PROTOCOL, CURLE_WEIRD_SERVER_REPLY, CURLE_BAD_CONTENT_ENCODING}},
        {HTTPErrorCode::OutOfResources, {CURLE_OUT_OF_MEMORY}}};
    for (const auto& [expected, codes] : table) {
        for (const CURLcode code : codes) {
            const Error error = curlError(code, "what happened");
            EXPECT_TRUE(isHTTPError(error, expected)) << error.description();
            ASSERT_TRUE(error.underlying());
            EXPECT_EQ(error.underlying()->domain(), "libcurl");
            EXPECT_EQ(error.underlying()->code(), code);
            EXPECT_EQ(error.underlying()->localizedDescription(), "what happened");
        }
    }
    EXPECT_EQ(curlError(CURLE_COULDNT_CONNECT, "").underlying()->localizedDescription(),
              curl_easy_strerror(CURLE_COULDNT_CONNECT));
}

class ErrorsTransportTest : public TransportTest {};

TEST_F(ErrorsTransportTest, AURLThatLeadsNowhere) {
    const std::vector<std::pair<std::string, HTTPErrorCode>> table = {
        {"http://127.0.0.1:1/", HTTPErrorCode::CannotConnect},
        // Longer than a label may be: the lookup fails without asking anybody.
        {"http://" + std::string(70, 'a') + "/", HTTPErrorCode::CannotFindHost},
        // Hosts that may be read in two ways.
        {"http://a%00b/", HTTPErrorCode::ServerTrust},
        {"https://127.1/", HTTPErrorCode::ServerTrust},
        {"http:///x", HTTPErrorCode::ServerTrust}};
    for (const auto& [url, expected] : table) {
        EXPECT_TRUE(failedWith(send(*unpinned(), get(url)), expected)) << url;
    }
    const auto refused = send(*unpinned(), get("http://127.0.0.1:1/"));
    EXPECT_EQ(refused->error.value().underlying()->code(), CURLE_COULDNT_CONNECT);
}

} // namespace
} // namespace KeloAPI::testing
