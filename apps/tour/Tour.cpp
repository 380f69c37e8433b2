#include "Tour.hpp"

#include <KeloAPI/queues/Diagnostics.hpp>

#include <cstdio>
#include <exception>

namespace KeloTour {

namespace {

void tell(const char* kind, const std::string& what) {
    std::printf("    %-6s %s\n", kind, what.c_str());
    static_cast<void>(std::fflush(stdout));
}

} // namespace

void check(bool holds, const std::string& what) {
    if (!holds) {
        throw StepFailed(what);
    }
}

void sent(const std::string& what) {
    tell("sent", what);
}

void came(const std::string& what) {
    tell("came", what);
}

void note(const std::string& what) {
    tell("", what);
}

void traceRequests() {
    KeloAPI::Diagnostics::setSink([](std::string_view line) { sent(std::string(line)); });
}

Silence::Silence() {
    KeloAPI::Diagnostics::setSink([](std::string_view) {});
}

Silence::~Silence() {
    traceRequests();
}

void Tour::step(const std::string& title, const std::function<void()>& run) {
    std::printf("%2d. %s\n", ++_steps, title.c_str());
    try {
        run();
        tell("ok", "");
    } catch (const std::exception& error) {
        ++_failed;
        tell("FAILED", error.what());
    }
}

bool Tour::finish() const {
    std::printf("demo: %d steps, %d failed\n", _steps, _failed);
    return _failed == 0;
}

} // namespace KeloTour
