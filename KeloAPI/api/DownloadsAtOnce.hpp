#pragma once

#include <KeloAPI/api/Session.hpp>

namespace KeloAPI {

/// As long as it lives, completions of downloads that endpoints start on this thread are called on
/// the thread that finished the file, at once, rather than on the main queue: for the library's own
/// work, which shall not wait until the main thread has time.
class DownloadsAtOnce {
public:
    DownloadsAtOnce();
    DownloadsAtOnce(const DownloadsAtOnce&) = delete;
    DownloadsAtOnce& operator=(const DownloadsAtOnce&) = delete;
    ~DownloadsAtOnce();

    /// How downloads that start on this thread are delivered now.
    static DownloadDelivery delivery();

private:
    const DownloadDelivery _before;
};

} // namespace KeloAPI
