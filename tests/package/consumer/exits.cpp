// A host that ends with exit code 7 while its calls are under way.
#include <KeloAPI/KeloAPI.hpp>

#include <cstdlib>

using namespace KeloAPI;

struct Host final : BasicSessionDelegate {
    std::optional<std::string> hostForSession(Session&) override { return "localhost:1"; }
};

int main() {
    static const auto host = std::make_shared<Host>();
    Api::setSessionDelegate(host);
    for (int i = 0; i < 100; ++i) {
        TimelineEndpoint::create("popular")->fetch([](const TimelineResult&) {});
    }
    std::exit(7);
}
