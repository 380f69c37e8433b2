#pragma once

#include "../../support/TemporaryFolder.hpp"
#include "../../support/TestCertificates.hpp"

#include <string>

namespace KeloServiceTest {

using KeloAPI::testing::TemporaryFolder;

/// The files of a fresh self-signed certificate for "localhost".
struct CertificateFiles {
    explicit CertificateFiles(const TemporaryFolder& folder, const std::string& name = "test") {
        const auto made = KeloAPI::testing::TestCertificate::selfSigned({});
        certificate = folder.write(name + ".pem", made.pem());
        key = folder.write(name + ".key", made.keyPem());
    }

    std::string certificate;
    std::string key;
};

} // namespace KeloServiceTest
