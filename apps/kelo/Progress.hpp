#pragma once

#include <string>

namespace KeloHost {

/// A line on standard error that is written over as work goes on. Silent unless `wanted` and
/// standard error is a terminal.
class Progress {
public:
    explicit Progress(bool wanted);

    void show(const std::string& line);
    void clear();

private:
    bool _visible;
};

} // namespace KeloHost
