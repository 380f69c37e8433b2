#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <string>

namespace KeloHost {

/// One line at the end of standard error that is written over as work goes on. It is never wider
/// than the terminal. Silent unless `wanted` and standard error is a terminal where text can be
/// written over.
class Progress {
public:
    enum class When : std::uint8_t {
        /// Left out when the line was written a moment ago.
        Soon,
        Now
    };

    explicit Progress(bool wanted = true);

    void show(const std::string& text);
    /// A bar and the percentage with `text` behind it. Where the terminal is narrow, the bar is
    /// shorter or not there.
    void showShare(double done, double all, const std::string& text);
    /// The same for bytes: how many there are, how many come each second, and the time left. `all`
    /// is not above 0 where it is not known; that has no bar. Where the terminal is narrow, `text`
    /// is left out, and then what is told of the speed.
    void showBytes(double done, double all, When when, const std::string& text = "");
    /// The next bytes are those of other work.
    void clear();

private:
    using Clock = std::chrono::steady_clock;
    struct Sample {
        Clock::time_point time;
        double done;
    };

    /// ", 250 kB/s, 12 s left", once enough time has passed to tell.
    std::string speedText(double done, double all);

    const bool _visible;
    std::string _shown;
    Clock::time_point _lastTime;
    /// Of the last seconds, oldest first.
    std::deque<Sample> _samples;
};

} // namespace KeloHost
