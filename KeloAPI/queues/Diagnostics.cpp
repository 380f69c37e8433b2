#include <KeloAPI/base/internal/NeverDestroyed.hpp>
#include <KeloAPI/queues/Diagnostics.hpp>

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

/// `text` with its control characters escaped: a file's name, for one, may hold line ends and what
/// steers a terminal. A backslash is escaped, too, so that none of the text looks like an escape.
std::string oneLine(std::string_view text) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string line;
    line.reserve(text.size());
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\\') {
            line += "\\\\";
        } else if (byte >= 0x20 && byte != 0x7F) {
            line += c;
        } else {
            line.append("\\x").append({digits[byte >> 4U], digits[byte & 15U]});
        }
    }
    return line;
}

void writeToStandardOutput(const std::string& line) {
    // A line that standard output does not take is lost: there is nowhere else to say so.
    static_cast<void>(std::fprintf(stdout, "%s\n", line.c_str()));
    static_cast<void>(std::fflush(stdout));
}

} // namespace

void setSink(Sink sink) {
    const std::lock_guard lock(state().mutex);
    state().sink.swap(sink); // the old one goes without the lock
}

void write(std::string_view text) {
    const std::string line = oneLine(text);
    const std::lock_guard lock(state().mutex);
    if (state().sink) {
        state().sink(line);
    } else {
        writeToStandardOutput(line);
    }
}

} // namespace KeloAPI::Diagnostics
