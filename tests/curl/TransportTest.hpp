#pragma once

#include "support/RecordingObserver.hpp"
#include "support/TestCertificates.hpp"

#include <KeloAPI/curl/internal/CurlTransport.hpp>
#include <KeloAPI/http/HTTPError.hpp>

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace KeloAPI::testing {

/// What the tests of the transport share.
class TransportTest : public ::testing::Test {
protected:
    using Observer = std::shared_ptr<RecordingObserver>;

    TransportTest() {
        // A proxy of the surroundings has no business on loopback.
        for (const char* name : {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy",
                                 "ALL_PROXY", "SSL_CERT_FILE", "SSL_CERT_DIR"}) {
            unsetenv(name);
        }
    }

    /// A transport that pins `certificates` for `host`.
    static std::shared_ptr<CurlTransport> pinning(const std::string& host,
                                                  std::vector<Certificate> certificates) {
        std::map<std::string, ServerTrustPolicy> table;
        table.emplace(host, PinCertificates{std::move(certificates)});
        return std::make_shared<CurlTransport>(ServerTrustPolicyManager(table));
    }

    static std::shared_ptr<CurlTransport> unpinned(const TransportSettings& settings = {}) {
        return std::make_shared<CurlTransport>(ServerTrustPolicyManager(), settings);
    }

    static URLRequest get(const std::string& url) {
        URLRequest request;
        request.url = URL::parse(url);
        request.timeoutInterval = timeLimit;
        return request;
    }

    static URLRequest with(Method method, const std::string& url, std::string body) {
        URLRequest request = get(url);
        request.method = method;
        request.body = Data(std::move(body));
        return request;
    }

    /// More than the buffers between two processes take.
    static std::string largeBody() {
        std::string body;
        body.resize(std::size_t{50} << 20U, 'x');
        return body;
    }

    static Observer start(Transport& transport, const URLRequest& request) {
        auto observer = std::make_shared<RecordingObserver>();
        transport.start(request, observer);
        return observer;
    }

    static std::vector<Observer> startMany(Transport& transport, const URLRequest& request,
                                           std::size_t count) {
        std::vector<Observer> observers(count);
        for (Observer& each : observers) {
            each = start(transport, request);
        }
        return observers;
    }

    /// Sends and waits for the end.
    static Observer send(Transport& transport, const URLRequest& request,
                         Observer observer = std::make_shared<RecordingObserver>(),
                         TransferKind kind = TransferKind::Call) {
        transport.start(request, observer, kind);
        EXPECT_TRUE(observer->wait()) << request.description() << " did not complete";
        EXPECT_EQ(observer->completions, 1);
        EXPECT_EQ(observer->callsAfterEnd, 0);
        return observer;
    }

    static ::testing::AssertionResult failedWith(const Observer& observer, HTTPErrorCode code) {
        if (!observer->error) {
            return ::testing::AssertionFailure() << "succeeded with status " << observer->status();
        }
        if (!isHTTPError(*observer->error, code)) {
            return ::testing::AssertionFailure() << observer->error->description();
        }
        return ::testing::AssertionSuccess() << observer->error->description();
    }

    static ::testing::AssertionResult succeeded(const Observer& observer, int status = 200) {
        if (observer->error) {
            return ::testing::AssertionFailure() << observer->error->description();
        }
        if (observer->responses.size() != 1 || observer->status() != status) {
            return ::testing::AssertionFailure()
                   << observer->responses.size() << " answers, status " << observer->status();
        }
        return ::testing::AssertionSuccess();
    }

    static void expectAllSucceeded(const std::vector<Observer>& observers) {
        for (const Observer& observer : observers) {
            ASSERT_TRUE(observer->wait());
            EXPECT_TRUE(succeeded(observer));
        }
    }
};

} // namespace KeloAPI::testing
