#include "support/RawServer.hpp"
#include "TransportTest.hpp"

#include <KeloAPI/curl/internal/CurlErrors.hpp>

namespace KeloAPI::testing {
namespace {

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

} // namespace
} // namespace KeloAPI::testing
