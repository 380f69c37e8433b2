// Downloads one file over a pinned connection and keeps it. Run, and killed, by
// killed_download_test.
//
//   download-once URL CERTIFICATE DESTINATION

#include "support/GetRequest.hpp"

#include <KeloAPI/http/Manager.hpp>
#include <KeloAPI/queues/MainQueue.hpp>

#include <cstdio>
#include <optional>
#include <string>

namespace {

using namespace KeloAPI;

} // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        return 2;
    }
    const auto url = URL::parse(argv[1]);
    const auto certificate = Certificate::fromPEM(testing::contentsOf(argv[2]));
    if (!url || !certificate) {
        return 3;
    }
    Manager manager(ServerTrustPolicyManager({{"localhost", PinCertificates{{*certificate}}}}));
    std::optional<std::string> outcome;
    const URL destination = URL::fileURL(argv[3]);
    manager.download(testing::GetRequest(url), [&](const HTTPResponse&) { return destination; })
        ->response([&](const ResponseContent& content, Timeline) -> Request::Completion {
            return [&, text = content.error ? content.error->description() : std::string()] {
                outcome = text;
            };
        });
    MainQueue::main().runUntil([&] { return outcome.has_value(); }, std::chrono::seconds(30));
    if (!outcome || !outcome->empty()) {
        std::fprintf(stderr, "download-once: %s\n", outcome ? outcome->c_str() : "no end");
        return 1;
    }
    return 0;
}
