#include "TrustTest.hpp"

#include <curl/curl.h>

#include <cstdarg>
#include <functional>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <type_traits>

// The linker puts these in the place of libcurl's own in this program, so that each call can be
// made to fail.
extern "C" {
CURLcode __real_curl_easy_setopt(CURL* easy, CURLoption option, ...);
CURLcode __wrap_curl_easy_setopt(CURL* easy, unsigned number, ...);
curl_slist* __real_curl_slist_append(curl_slist* list, const char* text);
curl_slist* __wrap_curl_slist_append(curl_slist* list, const char* text);
CURLMsg* __real_curl_multi_info_read(CURLM* multi, int* left);
CURLMsg* __wrap_curl_multi_info_read(CURLM* multi, int* left);
}

namespace KeloAPI::testing {
namespace {

/// What the library has set, and what of it fails.
struct WrappedCurl {
    std::mutex mutex;
    std::set<CURLoption> seen;
    std::optional<CURLoption> failing;
    std::set<std::string> headers;
    std::string failingHeader;
    /// What each transfer ends with; empty for what libcurl says.
    std::optional<CURLcode> result;
};

WrappedCurl wrappedCurl;

} // namespace
} // namespace KeloAPI::testing

using KeloAPI::testing::wrappedCurl;

// A parameter before the dots must not be of a type that is widened when it is passed among them.
CURLcode __wrap_curl_easy_setopt(CURL* easy, unsigned number, ...) {
    const auto option = static_cast<CURLoption>(number);
    {
        const std::lock_guard lock(wrappedCurl.mutex);
        wrappedCurl.seen.insert(option);
        if (wrappedCurl.failing == option) {
            return CURLE_OUT_OF_MEMORY;
        }
    }
    va_list arguments;
    va_start(arguments, number);
    const int kind = option / 10'000 * 10'000;
    static_assert(std::is_same_v<long, curl_off_t>);
    CURLcode code = CURLE_OK;
    if (kind == CURLOPTTYPE_LONG || kind == CURLOPTTYPE_OFF_T) {
        const long value = va_arg(arguments, long);
        code = __real_curl_easy_setopt(easy, option, value);
    } else {
        void* pointer = va_arg(arguments, void*);
        code = __real_curl_easy_setopt(easy, option, pointer);
    }
    va_end(arguments);
    return code;
}

curl_slist* __wrap_curl_slist_append(curl_slist* list, const char* text) {
    const std::lock_guard lock(wrappedCurl.mutex);
    wrappedCurl.headers.insert(text);
    return wrappedCurl.failingHeader == text ? nullptr : __real_curl_slist_append(list, text);
}

CURLMsg* __wrap_curl_multi_info_read(CURLM* multi, int* left) {
    CURLMsg* message = __real_curl_multi_info_read(multi, left);
    const std::lock_guard lock(wrappedCurl.mutex);
    if (message != nullptr && wrappedCurl.result) {
        message->data.result = *wrappedCurl.result;
    }
    return message;
}

namespace KeloAPI::testing {
namespace {

/// What cannot be set as it should be is not sent at all.
class FailingOptionsTest : public TrustTest {
protected:
    void SetUp() override {
        wrappedCurl.seen.clear();
        wrappedCurl.headers.clear();
        trustBySystem(leaf);
        setenv("SSL_CERT_DIR", "/nonexistent", 1);
        serve(leaf);
    }
    void TearDown() override {
        letAllPass();
        TrustTest::TearDown();
    }

    /// Changes what fails, as this says, while the library's threads run.
    static void change(const std::function<void(WrappedCurl&)>& work) {
        const std::lock_guard lock(wrappedCurl.mutex);
        work(wrappedCurl);
    }
    static void letAllPass() {
        change([](WrappedCurl& curl) {
            curl.failing.reset();
            curl.failingHeader.clear();
            curl.result.reset();
        });
    }

    URLRequest post(const std::string& host) const {
        URLRequest request = with(Method::POST, server->secureUrl("/", host), "body");
        request.headerFields = {{"X-Plain", "p"}, {"X-Blank", ""}};
        return request;
    }

    TestCertificate leaf = TestCertificate::selfSigned({});
    std::shared_ptr<CurlTransport> transport = pinning("localhost", {leaf.certificate()});
};

TEST_F(FailingOptionsTest, EveryOptionThatCannotBeSetFailsTheRequest) {
    for (const char* host : {"localhost", "127.0.0.1"}) {
        letAllPass();
        wrappedCurl.seen.clear();
        ASSERT_TRUE(succeeded(send(*unpinned(), post(host)))) << host;
        ASSERT_TRUE(succeeded(send(*transport, post(host)))) << host;
        const auto options = wrappedCurl.seen;
        EXPECT_TRUE(options.contains(CURLOPT_CAPATH));
        EXPECT_TRUE(options.contains(CURLOPT_URL));
        const int before = server->requests();
        for (const CURLoption option : options) {
            change([&](WrappedCurl& curl) { curl.failing = option; });
            EXPECT_TRUE(send(*transport, post(host))->error) << host << ' ' << option;
            EXPECT_TRUE(send(*pinning("localhost", {leaf.certificate()}), post(host))->error)
                << host << ' ' << option;
        }
        EXPECT_EQ(server->requests(), before) << host;
    }
}

TEST_F(FailingOptionsTest, EveryHeaderThatCannotBeKeptFailsTheRequest) {
    ASSERT_TRUE(succeeded(send(*transport, post("localhost"))));
    EXPECT_EQ(wrappedCurl.headers,
              (std::set<std::string>{"X-Plain: p", "X-Blank;", "Accept:", "Expect:"}));
    for (const std::string& header : std::set(wrappedCurl.headers)) {
        change([&](WrappedCurl& curl) { curl.failingHeader = header; });
        EXPECT_TRUE(send(*transport, post("localhost"))->error) << header;
    }
    EXPECT_EQ(server->requests(), 1);
    letAllPass();
    EXPECT_TRUE(succeeded(send(*transport, post("localhost"))));
}

TEST_F(FailingOptionsTest, AShortageAfterTheHeadIsNoLongHead) {
    change([](WrappedCurl& curl) { curl.result = CURLE_OUT_OF_MEMORY; });
    const auto heard = send(*transport, get(server->secureUrl("/", "localhost")));
    EXPECT_EQ(heard->status(), 200);
    EXPECT_TRUE(failedWith(heard, HTTPErrorCode::OutOfResources));
}

} // namespace
} // namespace KeloAPI::testing
