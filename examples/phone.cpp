// What an app sets once at its start on a system that has its own main queue, bundles, containers
// and log, before anything else of the library is used.
//
//     example-phone CONTAINERS
#include <KeloAPI/KeloAPI.hpp>

#include <functional>
#include <iostream>

using namespace KeloAPI;

namespace {

/// What the app knows of its system; each member is one call of the system's.
struct Platform {
    std::string bundleIdentifier;
    std::function<std::optional<std::string>(const std::string& group)> containerOfGroup;
    std::function<void(std::function<void()> work)> runOnMainQueue;
    std::function<void(std::string_view line)> log;
};

void setUp(const Platform& platform) {
    Application::setBundleIdentifier(platform.bundleIdentifier);
    Application::setGroupContainers(
        [find = platform.containerOfGroup](const std::string& group) -> std::optional<URL> {
            const auto path = find(group);
            return path ? std::optional(URL::fileURL(*path)) : std::nullopt;
        });
    MainQueue::main().setExecutor(platform.runOnMainQueue);
    Diagnostics::setSink(platform.log);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "example-phone CONTAINERS\n";
        return 2;
    }
    setUp({"org.example.loops",
           [containers = std::string(argv[1])](const std::string& group) {
               return std::optional(containers + "/" + group);
           },
           [](const std::function<void()>&) {}, // this example makes no calls
           [](std::string_view line) { std::cerr << line << '\n'; }});
    const auto cache = FileManager::sharedGroupManager("/videos/")->documentsDirectory();
    std::cout << cache.value_or("no cache") << '\n';
    MainQueue::main().setExecutor({});
    return cache ? 0 : 1;
}
