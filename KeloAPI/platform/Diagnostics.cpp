#include <KeloAPI/platform/Diagnostics.hpp>
#include <KeloAPI/platform/NeverDestroyed.hpp>

#include <cstdio>
#include <mutex>
#include <string>

namespace KeloAPI::Diagnostics {

namespace {

struct State {
    std::mutex mutex;
    Sink sink;
};

State& state() {
    static NeverDestroyed<State> instance;
    return *instance;
}

void writeToStandardOutput(std::string_view line) {
    std::string text(line);
    text += '\n';
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

} // namespace

void setSink(Sink sink) {
    const std::lock_guard lock(state().mutex);
    state().sink.swap(sink); // the old one goes without the lock
}

void write(std::string_view line) {
    const std::lock_guard lock(state().mutex);
    if (state().sink) {
        state().sink(line);
    } else {
        writeToStandardOutput(line);
    }
}

} // namespace KeloAPI::Diagnostics
