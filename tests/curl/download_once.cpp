// Downloads one file over a pinned connection and keeps it. Run, and killed, by
// killed_download_test.
//
//   download-once URL CERTIFICATE DESTINATION

#include "support/EndedRequest.hpp"
#include "support/FixedRequest.hpp"
#include "support/TemporaryFolder.hpp"

#include <KeloAPI/http/Manager.hpp>

#include <cstdio>
#include <string>

int main(int argc, char** argv) {
    using namespace KeloAPI;
    const auto certificate =
        argc == 4 ? Certificate::fromPEM(testing::contentsOf(argv[2])) : std::nullopt;
    if (!certificate) {
        return 2;
    }
    Manager manager(ServerTrustPolicyManager({{"localhost", PinCertificates{{*certificate}}}}));
    const auto destination = [path = URL::fileURL(argv[3])](const HTTPResponse&) { return path; };
    const auto error =
        testing::errorOf(manager.download(testing::FixedRequest(argv[1]), destination));
    if (error) {
        static_cast<void>(
            std::fprintf(stderr, "download-once: %s\n", error->description().c_str()));
    }
    return error ? 1 : 0;
}
