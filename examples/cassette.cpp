// Records what a host's code gets from the service, and plays it back without a network.
//
//     example-cassette record FILE
//     example-cassette play FILE
#include "ExampleHost.hpp"

#include <iostream>

using namespace KeloAPI;
using namespace KeloAPI::fakes;

namespace {

/// The host's code under test: who is signed in, or nobody.
void readName(std::function<void(std::string name)> completion) {
    MeEndpoint::create()->get([completion = std::move(completion)](const MeResult& me) {
        completion(me.success() != nullptr ? me.success()->user->username.value_or("?") : "nobody");
    });
}

/// What `readName` gives over a transport.
std::string nameOver(const std::shared_ptr<Transport>& transport) {
    const auto manager = std::make_shared<Manager>(transport);
    Api::session(SessionType::Authenticated)->setSessionManager(manager);
    std::optional<std::string> read;
    readName([&read](std::string name) { read = std::move(name); });
    MainQueue::main().runUntil([&read] { return read.has_value(); }, std::chrono::seconds(30));
    return read.value_or("nothing");
}

std::string record(const std::string& file) {
    const auto cassette = std::make_shared<Cassette>();
    const auto transport = std::make_shared<RecordingTransport>(ExampleHost::trust(), cassette);
    const std::string name = nameOver(transport);
    const auto error = cassette->save(file);
    return error ? error->description() : name;
}

std::string play(const std::string& file) {
    const auto cassette = Cassette::load(file);
    if (!cassette) {
        return cassette.error().description();
    }
    const auto transport = std::make_shared<PlaybackTransport>(cassette.value(), Playback::ByRoute);
    const std::string name = nameOver(transport);
    const auto unexpected = transport->unexpectedRequests();
    return unexpected.empty() ? name : unexpected.front();
}

} // namespace

int main(int argc, char** argv) {
    const std::string what = argc == 3 ? argv[1] : "";
    if (what != "record" && what != "play") {
        std::cerr << "example-cassette record|play FILE\n";
        return 2;
    }
    ExampleHost::use();
    std::cout << (what == "record" ? record(argv[2]) : play(argv[2])) << '\n';
    return 0;
}
