#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/base/internal/NeverDestroyed.hpp>
#include <KeloAPI/files/FileQueue.hpp>
#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/queues/MainQueue.hpp>
#include <KeloAPI/Settings.hpp>

#include <algorithm>
#include <deque>
#include <thread>
#include <unordered_map>

namespace KeloAPI {

namespace {

using Queues = std::map<std::string, std::shared_ptr<FileQueue>>;

Queues& fileQueues() {
    static NeverDestroyed<Queues> all;
    return *all;
}

std::string labelFor(const std::string& key) {
    return std::string(Settings::queueLabelPrefix) + "filedownloadqueue." + key;
}

struct SameFile {
    using Pointer = std::shared_ptr<FileEndpoint>;
    std::size_t operator()(const Pointer& a) const { return std::hash<Endpoint>()(*a); }
    bool operator()(const Pointer& a, const Pointer& b) const { return *a == *b; }
};

template <class Value>
using Files = std::unordered_map<std::shared_ptr<FileEndpoint>, Value, SameFile, SameFile>;
using FilePriorities = Files<QueuePriority>;
using FileCompletions = Files<std::vector<FileQueue::Completion>>;

} // namespace

struct FileQueue::Transfer {
    std::shared_ptr<FileEndpoint> endpoint;
    URL destination;
};

/// One call of an endpoint's download, which may end within the call.
struct FileQueue::Call {
    bool runsHere() const { return thread == std::this_thread::get_id() && running; }

    const std::thread::id thread = std::this_thread::get_id();
    // Both are used on that thread only.
    bool running = true;
    std::optional<Transfer> following;
};

/// What the queue knows of its files.
struct FileQueue::Collections {
    /// Adds a request; gives the transfer to start, if any.
    std::optional<Transfer> enter(const std::shared_ptr<FileEndpoint>& endpoint, const URL& url,
                                  QueuePriority priority, Completion completion) {
        // Its destructor may be the host's, and runs without the lock.
        std::shared_ptr<FileEndpoint> replaced;
        const std::lock_guard lock(mutex);
        if (remoteUrls.contains(endpoint)) {
            replaced = removeFirst(endpoint);
        }
        const auto place =
            std::partition_point(queuedFiles.begin(), queuedFiles.end(), [&](const auto& queued) {
                const auto found = priorities.find(queued);
                return found == priorities.end() || found->second >= priority;
            });
        queuedFiles.insert(place, endpoint);
        remoteUrls.insert_or_assign(endpoint, url);
        priorities.insert_or_assign(endpoint, priority);
        completeBlocks[endpoint].push_back(std::move(completion));
        return queuedFiles.size() == 1 ? front() : std::nullopt;
    }

    /// Ends a transfer; gives the next to start, if any.
    std::optional<Transfer> leave(const std::shared_ptr<FileEndpoint>& endpoint,
                                  const FileDownloadResult& result) {
        // Their destructors may be the host's, and run without the lock.
        std::shared_ptr<FileEndpoint> file;
        Files<URL>::node_type destination;
        FileCompletions::node_type completions;
        std::optional<Transfer> next;
        {
            const std::lock_guard lock(mutex);
            file = removeFirst(endpoint);
            destination = remoteUrls.extract(endpoint);
            completions = completeBlocks.extract(endpoint);
            next = front();
        }
        if (!completions.empty()) {
            MainQueue::main().async([toCall = std::move(completions.mapped()), result] {
                for (const Completion& completion : toCall) {
                    completion(result);
                }
            });
        }
        return next;
    }

    std::shared_ptr<FileEndpoint> removeFirst(const std::shared_ptr<FileEndpoint>& endpoint) {
        const auto found = std::find_if(queuedFiles.begin(), queuedFiles.end(),
                                        [&](const auto& queued) { return *queued == *endpoint; });
        if (found == queuedFiles.end()) {
            return nullptr;
        }
        auto removed = std::move(*found);
        queuedFiles.erase(found);
        return removed;
    }

    std::optional<Transfer> front() const {
        if (queuedFiles.empty()) {
            return std::nullopt;
        }
        const auto destination = remoteUrls.find(queuedFiles.front());
        if (destination == remoteUrls.end()) {
            return std::nullopt;
        }
        return Transfer{queuedFiles.front(), destination->second};
    }

    /// Held while neither an endpoint nor a completion is called.
    std::mutex mutex;
    /// In falling order of priority, which every insertion keeps.
    std::deque<std::shared_ptr<FileEndpoint>> queuedFiles;
    Files<URL> remoteUrls;
    /// Keeps the entries of files that have left the queue.
    FilePriorities priorities;
    FileCompletions completeBlocks;
};

FileQueue::FileQueue(const std::string& key)
    : _collections(std::make_shared<Collections>())
    , _downloadQueue(labelFor(key)) {}

std::shared_ptr<FileQueue> FileQueue::withKey(const std::string& key) {
    auto& queue = fileQueues()[key];
    if (!queue) {
        queue.reset(new FileQueue(key));
    }
    return queue;
}

void FileQueue::download(std::shared_ptr<FileEndpoint> endpoint, const URL& to,
                         Completion completion) {
    download(std::move(endpoint), to, QueuePriority::Low, std::move(completion));
}

void FileQueue::download(std::shared_ptr<FileEndpoint> endpoint, const URL& to,
                         QueuePriority priority, Completion completion) {
    require(endpoint != nullptr, "a file queue needs an endpoint");
    require(completion != nullptr, "a download needs a completion");
    if (endpoint->localUrl()) {
        completion(FileDownloadSuccess{std::move(endpoint)});
        return;
    }
    if (_downloadQueue.isInherited()) {
        // What runs in the parent never goes on here, and its thread may hold the lock for ever.
        MainQueue::main().async([completion = std::move(completion)] {
            completion(FileDownloadResult::Error{
                httpError(HTTPErrorCode::Inherited,
                          "the queue belongs to the parent of this forked process")});
        });
        return;
    }
    _downloadQueue.asyncOrOnMain([queue = weak_from_this(), endpoint = std::move(endpoint), to,
                                  priority, completion = std::move(completion)]() mutable {
        if (const auto self = queue.lock()) {
            self->downloadNext(
                self->_collections->enter(endpoint, to, priority, std::move(completion)));
        }
    });
}

void FileQueue::downloadNext(std::optional<Transfer> next) {
    // A loop, because a long row of endpoints that complete within the call would exhaust the
    // stack.
    while (next) {
        const auto call = std::make_shared<Call>();
        // The next file does not wait until the main thread has time for this one's end.
        next->endpoint->download(
            next->destination,
            [queue = weak_from_this(), endpoint = next->endpoint,
             call](const FileDownloadResult& result) {
                const auto self = queue.lock();
                if (!self) {
                    return;
                }
                auto following = self->_collections->leave(endpoint, result);
                if (call->runsHere()) {
                    call->following = std::move(following);
                } else {
                    self->downloadNext(std::move(following));
                }
            },
            DownloadDelivery::AtOnce);
        call->running = false;
        next = std::move(call->following);
    }
}

void FileQueue::kill() {
    Collections dropped;
    {
        // What the host's completions captured goes without the lock.
        const std::lock_guard lock(_collections->mutex);
        _collections->queuedFiles.swap(dropped.queuedFiles);
        _collections->remoteUrls.swap(dropped.remoteUrls);
        _collections->priorities.swap(dropped.priorities);
        _collections->completeBlocks.swap(dropped.completeBlocks);
    }
    const auto self = shared_from_this(); // the registry's may be the last reference
    std::erase_if(fileQueues(), [&](const auto& entry) { return entry.second == self; });
}

std::vector<std::shared_ptr<FileEndpoint>> FileQueue::queuedFiles() const {
    const std::lock_guard lock(_collections->mutex);
    return {_collections->queuedFiles.begin(), _collections->queuedFiles.end()};
}

} // namespace KeloAPI
