#pragma once

#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/http/ServerTrustPolicy.hpp>
#include <KeloAPI/http/TransportSettings.hpp>

#include <unistd.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace KeloAPI {

class CurlLoop;

/// The lanes of one transport: one for each policy of the table and one for all other hosts, and as
/// many again for exchanges whose observers may wait for a disk. Each is opened when it is first
/// needed.
class CurlLanes {
public:
    CurlLanes(const ServerTrustPolicyManager& trust, const TransportSettings& settings);
    CurlLanes(const CurlLanes&) = delete;
    CurlLanes& operator=(const CurlLanes&) = delete;
    ~CurlLanes();

    /// Null once the lanes are closed; throws `std::system_error` where a lane cannot be opened.
    std::shared_ptr<CurlLoop> laneFor(const URL& url, bool mayWaitForDisk);

    /// Cancels everything under way and ends the lanes' threads. Waits for them, except on one of
    /// them.
    void close();

private:
    /// The policy, and whether observers may wait for a disk.
    using Key = std::pair<const ServerTrustPolicy*, bool>;
    using Lanes = std::map<Key, std::shared_ptr<CurlLoop>>;

    std::shared_ptr<CurlLoop> lane(const Key& key);

    const ServerTrustPolicyManager _trust;
    const TransportSettings _settings;
    const pid_t _process = getpid();
    std::mutex _mutex;
    Lanes _lanes;
    /// The lane that was asked for last, because requests come in rows for one host.
    struct Last {
        std::string origin;
        bool mayWaitForDisk = false;
        std::shared_ptr<CurlLoop> lane;
    } _last;
    bool _closed = false;
};

} // namespace KeloAPI
