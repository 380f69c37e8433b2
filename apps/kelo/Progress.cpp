#include "Progress.hpp"

#include "Terminal.hpp"

#include <iostream>

namespace KeloHost {

namespace {

constexpr const char* eraseLine = "\r\x1b[K";

} // namespace

Progress::Progress(bool wanted)
    : _visible(wanted && Terminal::showsErrors()) {}

void Progress::show(const std::string& line) {
    if (_visible) {
        std::cerr << eraseLine << line << std::flush;
    }
}

void Progress::clear() {
    show("");
}

} // namespace KeloHost
