#include "DownloadBars.hpp"

#include "SizeText.hpp"
#include "Terminal.hpp"
#include "TextWidth.hpp"

#include <algorithm>
#include <utility>

namespace KeloHost {

using namespace KeloAPI;

namespace {

constexpr std::int64_t barWidth = 24;
/// More than that would not fit small terminals.
constexpr std::size_t mostBars = 10;
constexpr std::chrono::milliseconds moment(50);

std::string repeated(std::string_view text, std::int64_t times) {
    std::string all;
    for (std::int64_t i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

std::string stateText(const DownloadBar& bar) {
    if (bar.received == 0) {
        return "waiting";
    }
    std::string received = sizeText(static_cast<std::uint64_t>(bar.received));
    if (bar.expected <= 0) {
        return received;
    }
    return rightAligned(std::to_string(bar.received * 100 / bar.expected), 3) + " %, " + received +
           " of " + sizeText(static_cast<std::uint64_t>(bar.expected));
}

} // namespace

std::string_view nameOf(QueuePriority priority) {
    switch (priority) {
    case QueuePriority::High:
        return "high";
    case QueuePriority::Normal:
        return "normal";
    default:
        return "low";
    }
}

std::string barLine(std::size_t place, const DownloadBar& bar, std::size_t columns) {
    const std::int64_t full =
        bar.expected <= 0 ? 0 : std::min(bar.received * barWidth / bar.expected, barWidth);
    const std::string line = rightAligned(std::to_string(place), 3) + ". " + bar.postId + " " +
                             padded(nameOf(bar.priority), 6) + " " + repeated("█", full) +
                             repeated("░", barWidth - full) + " " + stateText(bar);
    return clipped(line, columns - 1);
}

DownloadBars::DownloadBars()
    : _progress(true) {}

void DownloadBars::add(const FileEndpoint& file, DownloadBar bar) {
    _bars.insert_or_assign(file.path(), std::move(bar));
}

void DownloadBars::progress(const FileEndpoint& file, std::int64_t received,
                            std::int64_t expected) {
    DownloadBar& bar = _bars[file.path()];
    bar.received = received;
    bar.expected = expected;
}

void DownloadBars::show(const Files& queued, bool now) {
    const auto time = std::chrono::steady_clock::now();
    if (!_progress.isVisible() || (!now && time - _shown < moment)) {
        return;
    }
    _shown = time;
    const std::size_t columns = Terminal::errorColumns().value_or(Terminal::usualColumns);
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < std::min(queued.size(), mostBars); ++i) {
        lines.push_back(barLine(i + 1, _bars[queued[i]->path()], columns));
    }
    if (queued.size() > mostBars) {
        lines.push_back(std::to_string(queued.size() - mostBars) + " more wait");
    }
    _progress.show(lines);
}

void DownloadBars::clear() {
    _progress.clear();
}

} // namespace KeloHost
