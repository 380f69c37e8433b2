#include <KeloAPI/curl/internal/CurlLanes.hpp>
#include <KeloAPI/curl/internal/CurlLoop.hpp>
#include <KeloAPI/queues/internal/ExitGuard.hpp>

#include <sys/resource.h>

#include <algorithm>

namespace KeloAPI {

namespace {

/// What of the text decides where the URL leads to: all that stands before its path.
std::string_view originOf(const URL& url) {
    const std::string_view text = url.absoluteString();
    return text.substr(0, text.find_first_of("/?#", text.find("//") + 2));
}

/// For each policy of the table and for all other hosts: for calls and for downloads.
std::size_t mostLanes(const ServerTrustPolicyManager& trust) {
    return 2 * (trust.size() + 1);
}

/// A lane's share of the connections that may be kept for their next use.
std::size_t idleConnections(const TransportSettings& settings, std::size_t lanes) {
    std::size_t most = settings.maxIdleConnections;
    rlimit descriptors{};
    if (::getrlimit(RLIMIT_NOFILE, &descriptors) == 0) {
        most = std::min<std::size_t>(most, descriptors.rlim_cur / 4);
    }
    return most / lanes;
}

/// Of the lane's thread: 15 characters at most.
const char* nameOf(bool isPinned, bool mayWaitForDisk) {
    if (mayWaitForDisk) {
        return isPinned ? "kelo-disk-pin" : "kelo-disk";
    }
    return isPinned ? "kelo-net-pinned" : "kelo-net";
}

} // namespace

CurlLanes::CurlLanes(const ServerTrustPolicyManager& trust, const TransportSettings& settings)
    : _trust(trust)
    , _settings(settings) {}

CurlLanes::~CurlLanes() = default;

std::shared_ptr<CurlLoop> CurlLanes::laneFor(const URL& url, bool mayWaitForDisk) {
    const std::lock_guard lock(_mutex);
    if (_closed) {
        return nullptr;
    }
    const std::string_view origin = originOf(url);
    if (_last.lane == nullptr || _last.origin != origin || _last.mayWaitForDisk != mayWaitForDisk) {
        _last = {std::string(origin), mayWaitForDisk,
                 lane({_trust.policyFor(url), mayWaitForDisk})};
    }
    return _last.lane;
}

std::shared_ptr<CurlLoop> CurlLanes::lane(const Key& key) {
    if (const auto found = _lanes.find(key); found != _lanes.end()) {
        return found->second;
    }
    const TrustStore store(key.first);
    const CurlLoop::Limits limits = {
        std::max<std::size_t>(key.second ? _settings.maxDownloadConnectionsPerHost
                                         : _settings.maxCallConnectionsPerHost,
                              1),
        idleConnections(_settings, mostLanes(_trust)),
    };
    auto lane = std::make_shared<CurlLoop>(store, nameOf(store.isPinned(), key.second), limits);
    lane->open();
    _lanes.emplace(key, lane);
    return lane;
}

void CurlLanes::close() {
    if (_process != getpid()) {
        return; // the threads did not come along into this forked child
    }
    Lanes lanes;
    {
        const std::lock_guard lock(_mutex);
        _closed = true;
        lanes.swap(_lanes);
        _last = {};
    }
    for (const auto& [key, lane] : lanes) {
        lane->stop();
    }
    // On a lane's own thread there is nobody to wait; and the threads of an exiting process are
    // parked for good.
    const bool onLane = std::any_of(lanes.begin(), lanes.end(), [](const auto& entry) {
        return entry.second->isCurrentThread();
    });
    for (const auto& [key, lane] : lanes) {
        if (onLane || ExitGuard::isExiting()) {
            lane->detach();
        } else {
            lane->join();
        }
    }
}

} // namespace KeloAPI
