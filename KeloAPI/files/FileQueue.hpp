#pragma once

#include <KeloAPI/base/Object.hpp>
#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/files/FileEndpoint.hpp>
#include <KeloAPI/files/QueuePriority.hpp>
#include <KeloAPI/queues/SerialQueue.hpp>

namespace KeloAPI {

/// Downloads files one after another, the most wanted first, for a named group of callers.
///
/// Files of equal priority run in the order of their latest requests, and a request never overtakes
/// an earlier one of its priority. A file that is wanted more than the one being downloaded takes
/// the first place and starts as soon as that one ends. A file that is requested again keeps one
/// place, by the latest priority, and one destination, the latest; all its completions are called
/// when its download ends.
///
/// One transfer runs at a time, with one exception: when the only file of the queue is requested
/// again while it is downloaded, a second transfer of it starts at once. The first to end
/// completes all requests.
///
/// Requests may come from any thread, `withKey` and `kill` from one. An endpoint's path must not
/// change while it is queued. Transfers are sent from the queue's own thread or from the one on
/// which the last of them ended, a network thread as a rule; from the main queue's where the system
/// has no thread to give. The session's delegate is asked there.
class KELO_API FileQueue final : public Object, public std::enable_shared_from_this<FileQueue> {
public:
    /// Neither empty nor throwing.
    using Completion = FileEndpoint::Completion;

    /// The one queue of that key, made at the first request.
    static std::shared_ptr<FileQueue> withKey(const std::string& key);

    /// Requests a file at priority `Low`.
    void download(std::shared_ptr<FileEndpoint> endpoint, const URL& to, Completion completion);

    /// Requests that the file be at the file URL `to`. A file that is there already, wherever that
    /// is, completes at once on this thread. Otherwise the completion is called on the main queue,
    /// exactly once unless the queue is killed or destroyed before. In a forked child, a queue of
    /// the parent completes with `HTTPErrorCode::Inherited`.
    void download(std::shared_ptr<FileEndpoint> endpoint, const URL& to, QueuePriority priority,
                  Completion completion);

    /// Drops all requests, whose completions are never called, and forgets the queue: the next
    /// `withKey` makes a fresh one. A running transfer goes on to its end.
    void kill();

    /// The file being downloaded, or next to be, and behind it those that wait, in their order.
    std::vector<std::shared_ptr<FileEndpoint>> queuedFiles() const;

    /// Where requests are entered; named by the application's prefix, "filedownloadqueue." and the
    /// key.
    const SerialQueue& downloadQueue() const { return _downloadQueue; }

private:
    struct Collections;
    struct Transfer;
    struct Call;

    explicit FileQueue(const std::string& key);

    void downloadNext(std::optional<Transfer> next);

    const std::shared_ptr<Collections> _collections;
    SerialQueue _downloadQueue;
};

} // namespace KeloAPI
