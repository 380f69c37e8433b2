#include "support/RawServer.hpp"
#include "TransportTest.hpp"

#include <curl/curl.h>

#include <atomic>
#include <chrono>
#include <thread>

// The linker puts these in the place of libcurl's own in this program.
extern "C" {
CURL* __real_curl_easy_init();
CURL* __wrap_curl_easy_init();
void __real_curl_easy_cleanup(CURL* easy);
void __wrap_curl_easy_cleanup(CURL* easy);
CURLM* __real_curl_multi_init();
CURLM* __wrap_curl_multi_init();
CURLMcode __real_curl_multi_cleanup(CURLM* multi);
CURLMcode __wrap_curl_multi_cleanup(CURLM* multi);
CURLMcode __real_curl_multi_perform(CURLM* multi, int* running);
CURLMcode __wrap_curl_multi_perform(CURLM* multi, int* running);
CURLSH* __real_curl_share_init();
CURLSH* __wrap_curl_share_init();
CURLSHcode __real_curl_share_cleanup(CURLSH* share);
CURLSHcode __wrap_curl_share_cleanup(CURLSH* share);
}

namespace KeloAPI::testing {
namespace {

/// How many of libcurl's objects the library has.
struct LiveHandles {
    std::atomic<int> easy = 0;
    std::atomic<int> multi = 0;
    std::atomic<int> share = 0;
};

LiveHandles liveHandles;

/// How often a network thread has let libcurl work.
std::atomic<int> turns = 0;

} // namespace
} // namespace KeloAPI::testing

using KeloAPI::testing::liveHandles;
using KeloAPI::testing::turns;

CURL* __wrap_curl_easy_init() {
    ++liveHandles.easy;
    return __real_curl_easy_init();
}

void __wrap_curl_easy_cleanup(CURL* easy) {
    liveHandles.easy -= easy != nullptr ? 1 : 0;
    __real_curl_easy_cleanup(easy);
}

CURLM* __wrap_curl_multi_init() {
    ++liveHandles.multi;
    return __real_curl_multi_init();
}

CURLMcode __wrap_curl_multi_cleanup(CURLM* multi) {
    liveHandles.multi -= multi != nullptr ? 1 : 0;
    return __real_curl_multi_cleanup(multi);
}

CURLMcode __wrap_curl_multi_perform(CURLM* multi, int* running) {
    ++turns;
    return __real_curl_multi_perform(multi, running);
}

CURLSH* __wrap_curl_share_init() {
    ++liveHandles.share;
    return __real_curl_share_init();
}

CURLSHcode __wrap_curl_share_cleanup(CURLSH* share) {
    const CURLSHcode code = __real_curl_share_cleanup(share);
    liveHandles.share -= code == CURLSHE_OK ? 1 : 0;
    return code;
}

namespace KeloAPI::testing {
namespace {

class LibcurlCallsTest : public TransportTest {};

TEST_F(LibcurlCallsTest, FreeAllThatATransportHadMade) {
    const int easyBefore = liveHandles.easy;
    const int multiBefore = liveHandles.multi;
    const int shareBefore = liveHandles.share;
    RawServer server(answeringAll(okResponse()));
    auto transport = unpinned();
    expectAllSucceeded(startMany(*transport, get(server.url("/")), 10));
    // One with a field of its own, whose handle serves no other.
    auto named = get(server.url("/"));
    named.headerFields = {{"Host", "other.example"}};
    EXPECT_TRUE(succeeded(send(*transport, named)));
    EXPECT_GT(liveHandles.easy, easyBefore) << "they wait for the next request";
    EXPECT_EQ(liveHandles.multi, multiBefore + 1);
    EXPECT_EQ(liveHandles.share, shareBefore + 1);
    transport.reset();
    EXPECT_EQ(liveHandles.easy, easyBefore);
    EXPECT_EQ(liveHandles.multi, multiBefore);
    EXPECT_EQ(liveHandles.share, shareBefore);
}

TEST_F(LibcurlCallsTest, AreMadeWhenSomethingHappensAndNotWhileACallWaitsForAConnection) {
    RawServer slow([](RawConnection& connection) {
        connection.serve([](const std::string&) {
            std::this_thread::sleep_for(std::chrono::milliseconds(100)); // its work
            return okResponse();
        });
    });
    const auto transport = unpinned({.maxCallConnectionsPerHost = 1});
    const int before = turns;
    expectAllSucceeded(startMany(*transport, get(slow.url("/")), 3));
    EXPECT_EQ(slow.connections(), 1);
    EXPECT_LT(turns - before, 100);
}

} // namespace
} // namespace KeloAPI::testing
