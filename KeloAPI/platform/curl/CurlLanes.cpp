#include <KeloAPI/platform/curl/CurlLanes.hpp>
#include <KeloAPI/platform/curl/CurlLoop.hpp>
#include <KeloAPI/platform/ExitGuard.hpp>

#include <algorithm>

namespace KeloAPI {

namespace {

/// What of the text decides where the URL leads to: all that stands before its path.
std::string_view originOf(const URL& url) {
    const std::string_view text = url.absoluteString();
    return text.substr(0, text.find_first_of("/?#", text.find("//") + 2));
}

/// Of the lane's thread: 15 characters at most.
const char* nameOf(bool isPinned, bool mayWaitForDisk) {
    if (mayWaitForDisk) {
        return isPinned ? "kelo-disk-pin" : "kelo-disk";
    }
    return isPinned ? "kelo-net-pinned" : "kelo-net";
}

} // namespace

CurlLanes::CurlLanes(const ServerTrustPolicyManager& trust)
    : _trust(trust) {}

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
    auto lane = std::make_shared<CurlLoop>(store, nameOf(store.isPinned(), key.second));
    lane->open();
    _lanes.emplace(key, lane);
    return lane;
}

void CurlLanes::close() {
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
