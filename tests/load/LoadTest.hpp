#pragma once

#include "support/FixedRequest.hpp"
#include "support/MainLoop.hpp"
#include "support/Nginx.hpp"
#include "support/TestCertificates.hpp"

#include <KeloAPI/api/Session.hpp>
#include <KeloAPI/http/Manager.hpp>
#include <KeloAPI/queues/Diagnostics.hpp>

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

namespace KeloAPI::testing {

/// What this process takes at a moment.
struct Taken {
    static Taken now() {
        Taken taken;
        taken.descriptors = entries("/proc/self/fd");
        taken.threads = entries("/proc/self/task");
        std::ifstream("/proc/self/statm") >> taken.kibibytes >> taken.kibibytes;
        taken.kibibytes *= sysconf(_SC_PAGESIZE) / 1024;
        return taken;
    }

    std::string text() const {
        return std::to_string(descriptors) + " descriptors, " + std::to_string(threads) +
               " threads, " + std::to_string(kibibytes) + " KiB";
    }

    std::size_t descriptors = 0;
    std::size_t threads = 0;
    long kibibytes = 0;

private:
    static std::size_t entries(const char* folder) {
        const std::filesystem::directory_iterator all(folder);
        return static_cast<std::size_t>(std::distance(begin(all), end(all)));
    }
};

/// Calls and downloads against an nginx, each of which must complete exactly once.
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

    void TearDown() override { Diagnostics::setSink({}); }

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

    static void say(const std::string& what, Clock::time_point began, int calls) {
        const std::chrono::duration<double> seconds = Clock::now() - began;
        std::cout << what << ": " << calls << " in " << seconds.count() << " s, "
                  << static_cast<int>(calls / seconds.count()) << " a second\n";
    }

    std::unique_ptr<Nginx> server;
    std::unique_ptr<ServerTrustPolicyManager> trust;
    int started = 0;
    int ended = 0;
    int good = 0;
};

} // namespace KeloAPI::testing
