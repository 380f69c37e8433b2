#include "Progress.hpp"

#include "Terminal.hpp"
#include "TextWidth.hpp"

#include <iostream>

namespace KeloHost {

Progress::Progress(bool wanted)
    : _visible(wanted && Terminal::showsErrors()) {}

void Progress::show(const std::vector<std::string>& lines) {
    if (!_visible) {
        return;
    }
    constexpr std::size_t usualColumns = 80;
    const std::size_t columns = Terminal::errorColumns().value_or(usualColumns);
    std::string text = _linesAbove == 0 ? "" : "\x1b[" + std::to_string(_linesAbove) + "A";
    text += "\r\x1b[J";
    for (std::size_t i = 0; i < lines.size(); ++i) {
        text += (i == 0 ? "" : "\n") + clipped(lines[i], columns - 1);
    }
    _linesAbove = lines.empty() ? 0 : lines.size() - 1;
    std::cerr << text << std::flush;
}

} // namespace KeloHost
