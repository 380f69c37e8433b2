#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/base/internal/NeverDestroyed.hpp>
#include <KeloAPI/files/FileQueue.hpp>
#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/queues/MainQueue.hpp>
#include <KeloAPI/Settings.hpp>

#include <algorithm>
#include <map>
#include <thread>
#include <utility>

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

} // namespace

/// One call of an endpoint's download, which may end within the call.
struct FileQueue::Call {
    bool runsHere() const { return thread == std::this_thread::get_id() && running; }

    const std::thread::id thread = std::this_thread::get_id();
    // Both are used on that thread only.
    bool running = true;
    std::optional<Transfer> following;
};

FileQueue::FileQueue(const std::string& key)
    : _downloadQueue(labelFor(key)) {}

FileQueue::~FileQueue() = default;

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
            self->downloadNext(self->enter(endpoint, to, priority, std::move(completion)));
        }
    });
}

std::optional<FileQueue::Transfer> FileQueue::enter(const std::shared_ptr<FileEndpoint>& endpoint,
                                                    const URL& url, QueuePriority priority,
                                                    Completion completion) {
    std::shared_ptr<FileEndpoint> replaced;
    const std::lock_guard lock(_mutex);
    replaced = enqueueFile(endpoint, url, priority, std::move(completion));
    return _queuedFiles.size() == 1 ? front() : std::nullopt;
}

std::shared_ptr<FileEndpoint> FileQueue::enqueueFile(const std::shared_ptr<FileEndpoint>& endpoint,
                                                     const URL& url, QueuePriority priority,
                                                     Completion completion) {
    auto replaced = _remoteUrls.contains(endpoint) ? removeFirst(endpoint) : nullptr;
    const auto place =
        std::partition_point(_queuedFiles.begin(), _queuedFiles.end(), [&](const auto& queued) {
            const auto found = _priorities.find(queued);
            return found == _priorities.end() || found->second >= priority;
        });
    _queuedFiles.insert(place, endpoint);
    _remoteUrls.insert_or_assign(endpoint, url);
    _priorities.insert_or_assign(endpoint, priority);
    _completeBlocks[endpoint].push_back(std::move(completion));
    return replaced;
}

void FileQueue::downloadNext(std::optional<Transfer> next) {
    // A loop, because a long row of endpoints that answer within the call would exhaust the stack.
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
                auto following = self->leave(endpoint, result);
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

std::optional<FileQueue::Transfer> FileQueue::leave(const std::shared_ptr<FileEndpoint>& endpoint,
                                                    const FileDownloadResult& result) {
    Dequeued dequeued;
    std::optional<Transfer> next;
    {
        const std::lock_guard lock(_mutex);
        dequeued = dequeueFile(endpoint);
        next = front();
    }
    if (!dequeued.completions.empty()) {
        MainQueue::main().async([completions = std::move(dequeued.completions.mapped()), result] {
            for (const Completion& completion : completions) {
                completion(result);
            }
        });
    }
    return next;
}

FileQueue::Dequeued FileQueue::dequeueFile(const std::shared_ptr<FileEndpoint>& endpoint) {
    return {removeFirst(endpoint), _remoteUrls.extract(endpoint),
            _completeBlocks.extract(endpoint)};
}

std::shared_ptr<FileEndpoint>
FileQueue::removeFirst(const std::shared_ptr<FileEndpoint>& endpoint) {
    const auto found = std::find_if(_queuedFiles.begin(), _queuedFiles.end(),
                                    [&](const auto& queued) { return *queued == *endpoint; });
    if (found == _queuedFiles.end()) {
        return nullptr;
    }
    auto removed = std::move(*found);
    _queuedFiles.erase(found);
    return removed;
}

std::optional<FileQueue::Transfer> FileQueue::front() const {
    if (_queuedFiles.empty()) {
        return std::nullopt;
    }
    const auto destination = _remoteUrls.find(_queuedFiles.front());
    if (destination == _remoteUrls.end()) {
        return std::nullopt;
    }
    return Transfer{_queuedFiles.front(), destination->second};
}

void FileQueue::kill() {
    decltype(_queuedFiles) files;
    decltype(_remoteUrls) remoteUrls;
    decltype(_priorities) priorities;
    decltype(_completeBlocks) completeBlocks;
    {
        // What the host's completions captured goes without the lock.
        const std::lock_guard lock(_mutex);
        _queuedFiles.swap(files);
        _remoteUrls.swap(remoteUrls);
        _priorities.swap(priorities);
        _completeBlocks.swap(completeBlocks);
    }
    const auto self = shared_from_this(); // the registry's may be the last reference
    std::erase_if(fileQueues(), [&](const auto& entry) { return entry.second == self; });
}

std::vector<std::shared_ptr<FileEndpoint>> FileQueue::queuedFiles() const {
    const std::lock_guard lock(_mutex);
    return {_queuedFiles.begin(), _queuedFiles.end()};
}

} // namespace KeloAPI
