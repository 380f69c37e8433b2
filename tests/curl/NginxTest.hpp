#pragma once

#include "support/Nginx.hpp"
#include "TransportTest.hpp"

#include <memory>

namespace KeloAPI::testing {

/// A test with an nginx of its own, whose certificate it may pin for "localhost".
class NginxTest : public TransportTest {
protected:
    void SetUp() override {
        if (!Nginx::isInstalled()) {
            GTEST_SKIP() << "nginx is not installed";
        }
        nginx = std::make_unique<Nginx>(leaf);
    }

    TestCertificate leaf = TestCertificate::selfSigned({});
    std::unique_ptr<Nginx> nginx;
};

} // namespace KeloAPI::testing
