#include "Progress.hpp"

#include "Terminal.hpp"

#include <cstdio>

namespace KeloHost {

namespace {

constexpr const char* eraseLine = "\r\x1b[K";

} // namespace

Progress::Progress(bool wanted)
    : _visible(wanted && Terminal::showsErrors()) {}

void Progress::show(const std::string& line) {
    if (_visible) {
        std::fprintf(stderr, "%s%s", eraseLine, line.c_str());
        std::fflush(stderr);
    }
}

void Progress::clear() {
    show("");
}

} // namespace KeloHost
