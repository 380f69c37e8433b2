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
    // A line that standard output does not take is lost: there is nowhere else to say so.
    static_cast<void>(std::fwrite(text.data(), 1, text.size(), stdout));
    static_cast<void>(std::fflush(stdout));
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
