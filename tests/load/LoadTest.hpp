#pragma once

#include "support/FixedRequest.hpp"
#include "support/GeneratedBlock.hpp"
#include "support/MainLoop.hpp"
#include "support/Nginx.hpp"
#include "support/TestCertificates.hpp"

#include <KeloAPI/api/Session.hpp>
#include <KeloAPI/http/Manager.hpp>
#include <KeloAPI/queues/Diagnostics.hpp>

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <ctime>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <thread>

namespace KeloAPI::testing {

/// Calls and downloads against an nginx, each of which must complete exactly once. What they took
/// is told, and KELO_UPDATE_DOCS=1 has the whole program write it into the page on reliability:
/// these figures are the machine's, and nothing is compared with them.
class LoadTest : public ::testing::Test {
protected:
    using Clock = std::chrono::steady_clock;

    static constexpr std::chrono::minutes patience{5};

    void SetUp() override {
        if (!Nginx::isInstalled()) {
            GTEST_SKIP() << "nginx is not installed";
        }
        static const TestCertificate certificate = TestCertificate::selfSigned({});
        Diagnostics::setSink([](std::string_view) {});
        server = std::make_unique<Nginx>(certificate);
        std::ofstream(server->files() / "loop.mp4") << std::string(50'000, 'v');
        trust = std::make_unique<ServerTrustPolicyManager>(std::map<std::string, ServerTrustPolicy>{
            {"localhost", PinCertificates{{certificate.certificate()}}},
            {"127.0.0.1", PinCertificates{{certificate.certificate()}}}});
    }

    void TearDown() override {
        Diagnostics::setSink({});
        if (!IsSkipped() && !HasFailure()) {
            writeGeneratedBlock(KELO_RELIABILITY_PAGE, "load", block());
        }
    }

    std::shared_ptr<Manager> makeManager(const TransportSettings& settings = {}) const {
        return std::make_shared<Manager>(*trust, settings);
    }

    /// Completes once each; every completion counts, and those without an error are good.
    std::shared_ptr<Request> call(const std::shared_ptr<Manager>& manager, const std::string& url,
                                  std::function<void()> then = {}) {
        return heard(manager->request(FixedRequest(url)), std::move(then));
    }

    std::shared_ptr<Request> heard(const std::shared_ptr<Request>& request,
                                   std::function<void()> then = {}) {
        ++started;
        request->response([this, then = std::move(then)](const ResponseContent& content, Timeline) {
            return [this, then, good = !content.error] {
                ++ended;
                this->good += good ? 1 : 0;
                if (then) {
                    then();
                }
            };
        });
        return request;
    }

    bool allEnd() {
        return runUntil([this] { return ended == started; }, patience);
    }

    /// Tells of `count` exchanges that began then.
    static void say(const std::string& what, Clock::time_point began, int count) {
        const std::chrono::duration<double> seconds = Clock::now() - began;
        std::ostringstream row;
        row << "| " << what << " | " << count << " | " << std::fixed << std::setprecision(2)
            << seconds.count() << " s | " << std::lround(count / seconds.count()) << " |\n";
        std::cout << row.str();
        rows() += row.str();
    }

    std::unique_ptr<Nginx> server;
    std::unique_ptr<ServerTrustPolicyManager> trust;
    int started = 0;
    int ended = 0;
    int good = 0;

private:
    /// What all tests so far have told.
    static std::string& rows() {
        static std::string all;
        return all;
    }

    static std::string block() {
        const std::time_t now = std::time(nullptr);
        std::ostringstream text;
        text << "Measured on " << std::put_time(std::gmtime(&now), "%Y-%m-%d") << ", with "
             << std::thread::hardware_concurrency() << " cores (" << processor() << ").\n\n"
             << "| Load | Exchanges | Time | A second |\n| --- | --- | --- | --- |\n"
             << rows();
        return text.str();
    }

    static std::string processor() {
        std::ifstream all("/proc/cpuinfo");
        for (std::string line; std::getline(all, line);) {
            if (line.starts_with("model name")) {
                return line.substr(line.find(": ") + 2);
            }
        }
        return "of an unknown kind";
    }
};

} // namespace KeloAPI::testing
