#include "support/RawServer.hpp"
#include "TransportTest.hpp"

#include <KeloAPI/curl/internal/CurlErrors.hpp>

namespace KeloAPI::testing {
namespace {

TEST(CurlErrorsTest, CodesOfTheLibraryBelowAreNamedInOurs) {
    const std::vector<std::pair<CURLcode, HTTPErrorCode>> table = {
        {CURLE_URL_MALFORMAT, HTTPErrorCode::UnsupportedURL},
        {CURLE_COULDNT_RESOLVE_HOST, HTTPErrorCode::CannotFindHost},
        {CURLE_COULDNT_RESOLVE_PROXY, HTTPErrorCode::CannotFindHost},
        {CURLE_COULDNT_CONNECT, HTTPErrorCode::CannotConnect},
        {CURLE_OPERATION_TIMEDOUT, HTTPErrorCode::TimedOut},
        {CURLE_GOT_NOTHING, HTTPErrorCode::ConnectionLost},
        {CURLE_PARTIAL_FILE, HTTPErrorCode::ConnectionLost},
        {CURLE_RECV_ERROR, HTTPErrorCode::ConnectionLost},
        {CURLE_SEND_ERROR, HTTPErrorCode::ConnectionLost},
        {CURLE_HTTP2_STREAM, HTTPErrorCode::ConnectionLost},
        {CURLE_HTTP2, HTTPErrorCode::ConnectionLost},
        {CURLE_PEER_FAILED_VERIFICATION, HTTPErrorCode::ServerTrust},
        {CURLE_SSL_CONNECT_ERROR, HTTPErrorCode::ServerTrust},
        {CURLE_SSL_CACERT_BADFILE, HTTPErrorCode::ServerTrust},
        {CURLE_UNSUPPORTED_PROTOCOL, HTTPErrorCode::BadServerResponse},
        {CURLE_WEIRD_SERVER_REPLY, HTTPErrorCode::BadServerResponse},
        {CURLE_BAD_CONTENT_ENCODING, HTTPErrorCode::BadServerResponse},
        {CURLE_OUT_OF_MEMORY, HTTPErrorCode::OutOfResources},
    };
    for (const auto& [code, expected] : table) {
        const Error error = curlError(code, "what happened");
        EXPECT_TRUE(isHTTPError(error, expected)) << error.description();
        ASSERT_TRUE(error.underlying());
        EXPECT_EQ(error.underlying()->domain(), "libcurl");
        EXPECT_EQ(error.underlying()->code(), code);
        EXPECT_EQ(error.underlying()->localizedDescription(), "what happened");
    }
}

TEST(CurlErrorsTest, WithoutDetailTheGeneralTextStands) {
    const Error error = curlError(CURLE_COULDNT_CONNECT, "");
    EXPECT_EQ(error.underlying()->localizedDescription(),
              curl_easy_strerror(CURLE_COULDNT_CONNECT));
}

class ErrorsTransportTest : public TransportTest {};

TEST_F(ErrorsTransportTest, NobodyListens) {
    const auto heard = send(*unpinned(), get("http://127.0.0.1:1/"));
    EXPECT_TRUE(failedWith(heard, HTTPErrorCode::CannotConnect));
    EXPECT_EQ(heard->error->underlying()->code(), CURLE_COULDNT_CONNECT);
}

TEST_F(ErrorsTransportTest, AConnectionThatBreaksOffInItsHandshakeIsLost) {
    for (const bool abruptly : {false, true}) {
        RawServer server([abruptly](RawConnection& connection) {
            connection.read(abruptly ? 5 : 65536);
            if (abruptly) {
                connection.reset();
            }
        });
        const auto heard = send(*unpinned(), get(server.url("/", "https")));
        EXPECT_TRUE(failedWith(heard, HTTPErrorCode::ConnectionLost)) << abruptly;
    }
}

TEST_F(ErrorsTransportTest, AHandshakeThatIsRefusedOrNoneIsNoTrust) {
    const std::string refusal("\x15\x03\x03\x00\x02\x02\x28", 7); // a fatal alert
    for (const std::string& bytes : {refusal, std::string("HTTP/1.1 400 Bad Request\r\n\r\n")}) {
        RawServer server([&bytes](RawConnection& connection) {
            connection.read(65536);
            connection.write(bytes);
            connection.waitForClose();
        });
        const auto heard = send(*unpinned(), get(server.url("/", "https")));
        EXPECT_TRUE(failedWith(heard, HTTPErrorCode::ServerTrust));
    }
}

TEST_F(ErrorsTransportTest, NameWithoutAddress) {
    // Longer than a label may be: the lookup fails without asking anybody.
    const auto heard = send(*unpinned(), get("http://" + std::string(70, 'a') + "/"));
    EXPECT_TRUE(failedWith(heard, HTTPErrorCode::CannotFindHost));
}

TEST_F(ErrorsTransportTest, AHostThatMayBeReadInTwoWaysIsRefused) {
    for (const char* url : {"http://a%00b/", "https://127.1/", "http:///x"}) {
        EXPECT_TRUE(failedWith(send(*unpinned(), get(url)), HTTPErrorCode::ServerTrust)) << url;
    }
}

} // namespace
} // namespace KeloAPI::testing
