#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace KeloHost {

/// Lines at the end of standard error that are written over as work goes on. Silent unless `wanted`
/// and standard error is a terminal.
class Progress {
public:
    explicit Progress(bool wanted);

    /// Each is cut to the terminal: of lines that wrap, parts would stay.
    void show(const std::vector<std::string>& lines);
    void clear() { show({}); }

private:
    bool _visible;
    std::size_t _linesAbove = 0;
};

} // namespace KeloHost
