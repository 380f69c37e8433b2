#include "Progress.hpp"

#include "Terminal.hpp"
#include "Text.hpp"

#include <algorithm>

namespace KeloHost {

namespace {

constexpr std::chrono::milliseconds moment(50);
/// The speed is that of these last seconds, and told when there is half a second to tell it from.
constexpr std::chrono::seconds speedWindow(5);
constexpr std::chrono::milliseconds leastTime(500);
constexpr std::size_t widestBar = 24;
/// A shorter bar says nothing.
constexpr std::size_t leastBar = 4;

/// The last columns stay empty: some terminals break the line when the very last is written, and
/// what Ctrl-C leaves behind the line, "^C", must not.
std::size_t usableColumns() {
    constexpr std::size_t assumedColumns = 80;
    constexpr std::size_t empty = 3;
    return std::max(Terminal::errorColumns().value_or(assumedColumns), empty + 1) - empty;
}

std::string bytesText(double bytes) {
    return sizeText(static_cast<std::uint64_t>(std::max(bytes, 0.0)));
}

} // namespace

Progress::Progress(bool wanted)
    : _visible(wanted && Terminal::canWriteOver()) {}

void Progress::show(const std::string& text) {
    if (_visible && text != _shown) {
        _shown = text;
        Terminal::writeOver(clipped(text, usableColumns()));
    }
}

void Progress::showShare(double done, double all, const std::string& text) {
    const std::string behind = percentText(done, all) + text;
    const std::size_t used = displayWidth(behind) + 1;
    const std::size_t room = usableColumns() - std::min(usableColumns(), used);
    show(room < leastBar ? behind : barText(done, all, std::min(room, widestBar)) + " " + behind);
}

void Progress::showBytes(double done, double all, When when, const std::string& text) {
    const auto now = Clock::now();
    if (!_visible || (when == When::Soon && now - _lastTime < moment)) {
        return;
    }
    _lastTime = now;
    const std::string speed = speedText(done, all);
    if (all <= 0) {
        show(bytesText(done) + speed + text);
        return;
    }
    std::string behind = ", " + bytesText(done) + " of " + bytesText(all);
    const auto fits = [&behind](std::size_t bar, const std::string& more) {
        return bar + displayWidth(" 100 %" + behind + more) <= usableColumns();
    };
    if (fits(leastBar, speed)) {
        behind += speed;
    }
    if (fits(widestBar, text)) {
        behind += text;
    }
    showShare(done, all, behind);
}

void Progress::clear() {
    _samples.clear();
    show("");
}

std::string Progress::speedText(double done, double all) {
    // What has to be sent again was not done.
    if (!_samples.empty() && done < _samples.back().done) {
        _samples.clear();
    }
    _samples.push_back({_lastTime, done});
    while (_lastTime - _samples.front().time > speedWindow) {
        _samples.pop_front();
    }
    const std::chrono::duration<double> time = _lastTime - _samples.front().time;
    const double perSecond = time < leastTime ? 0 : (done - _samples.front().done) / time.count();
    if (perSecond < 1) {
        return "";
    }
    std::string text = ", " + bytesText(perSecond) + "/s";
    if (all > done) {
        using Left = std::chrono::duration<double, std::micro>;
        constexpr double mostSeconds = 365.0 * 24 * 3600;
        const double seconds = std::min((all - done) / perSecond, mostSeconds);
        text +=
            ", " + ageText(std::chrono::ceil<std::chrono::seconds>(Left(seconds * 1e6))) + " left";
    }
    return text;
}

} // namespace KeloHost
