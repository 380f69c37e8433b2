#pragma once

#include "Progress.hpp"

#include <KeloAPI/files/FileEndpoint.hpp>
#include <KeloAPI/files/QueuePriority.hpp>

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace KeloHost {

std::string_view nameOf(KeloAPI::QueuePriority priority);

/// A file of the queue as it is shown. -1 bytes are not known.
struct DownloadBar {
    std::string postId;
    KeloAPI::QueuePriority priority = KeloAPI::QueuePriority::Low;
    std::int64_t received = 0;
    std::int64_t expected = -1;
};

/// The line for a file at that place of the queue, as wide as the terminal at most.
std::string barLine(std::size_t place, const DownloadBar& bar, std::size_t columns);

/// One bar for each queued file, in the queue's order, at the end of standard error. Silent when
/// that is no terminal.
class DownloadBars {
public:
    using Files = std::vector<std::shared_ptr<KeloAPI::FileEndpoint>>;

    DownloadBars();

    void add(const KeloAPI::FileEndpoint& file, DownloadBar bar);
    void progress(const KeloAPI::FileEndpoint& file, std::int64_t received, std::int64_t expected);

    /// Shows the bars of those files; when the last time was a moment ago, only if `now`.
    void show(const Files& queued, bool now);
    void clear();

private:
    Progress _progress;
    /// By the paths of the files.
    std::map<std::string, DownloadBar> _bars;
    std::chrono::steady_clock::time_point _shown;
};

} // namespace KeloHost
