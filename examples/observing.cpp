// Prints what each request of the library takes, and over which connection.
#include "ExampleHost.hpp"

#include <chrono>
#include <iostream>
#include <sstream>

using namespace KeloAPI;

namespace {

/// Called on the library's threads, of several exchanges at a time: it shares nothing between them.
class Stopwatch final : public TrafficObserver {
public:
    void didFinishHop(const ObservedExchange&, const HopReport& hop) override {
        std::ostringstream line;
        // The path alone: a query may hold secrets.
        line << name(hop.method) << ' ' << hop.url.path() << ": " << inMilliseconds(hop.total);
        if (hop.secured) {
            line << ", " << inMilliseconds(*hop.secured) << " of them to connect";
        }
        line << (hop.reusedConnection ? ", on a connection that was there" : "") << '\n';
        std::cout << line.str();
    }

    void didEnd(const ObservedExchange&, const std::optional<Error>& error, Date) override {
        if (error) { // whose message may name a URL, too
            std::cout << error->domain() + ' ' + std::to_string(error->code()) + '\n';
        }
    }

private:
    static std::string inMilliseconds(std::chrono::microseconds time) {
        return std::to_string(std::chrono::round<std::chrono::milliseconds>(time).count()) + " ms";
    }
};

void observe() {
    TransportSettings settings;
    settings.observer = std::make_shared<Stopwatch>();
    ExampleHost::useManager(settings);
}

} // namespace

int main() {
    ExampleHost::use();
    observe();
    const auto me = MeEndpoint::create();
    me->get([me](const MeResult&) { me->get([](const MeResult&) { MainQueue::main().stop(); }); });
    MainQueue::main().run();
    return 0;
}
