#include "Progress.hpp"

#include "Terminal.hpp"

#include <iostream>

namespace KeloHost {

namespace {

constexpr const char* eraseToEnd = "\r\x1b[J";

} // namespace

Progress::Progress(bool wanted)
    : _visible(wanted && Terminal::showsErrors()) {}

void Progress::show(const std::string& line) {
    show(std::vector{line});
}

void Progress::show(const std::vector<std::string>& lines) {
    if (!_visible) {
        return;
    }
    std::string text = _linesAbove == 0 ? "" : "\x1b[" + std::to_string(_linesAbove) + "A";
    text += eraseToEnd;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        text += (i == 0 ? "" : "\n") + lines[i];
    }
    _linesAbove = lines.empty() ? 0 : lines.size() - 1;
    std::cerr << text << std::flush;
}

void Progress::clear() {
    show(std::vector<std::string>());
}

} // namespace KeloHost
