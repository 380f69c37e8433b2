#pragma once

#include "TimeLimit.hpp"

#include <KeloAPI/http/TrafficObserver.hpp>

#include <algorithm>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace KeloAPI::testing {

/// Keeps what the exchanges of managers tell, and counts what breaks the order of it.
class RecordedTraffic : public TrafficObserver {
public:
    struct Exchange {
        ObservedExchange facts;
        std::vector<HopReport> hops;
        std::thread::id startedOn;
        int ends = 0;
        std::optional<Error> error;
        Date end;
    };

    void didStart(const ObservedExchange& exchange) override {
        const std::lock_guard lock(_mutex);
        const auto [entry, isNew] = _exchanges.try_emplace(exchange.id);
        entry->second.facts = exchange;
        entry->second.startedOn = std::this_thread::get_id();
        _faults += isNew ? 0 : 1;
    }
    void didFinishHop(const ObservedExchange& exchange, const HopReport& hop) override {
        const std::lock_guard lock(_mutex);
        under(exchange).hops.push_back(hop);
    }
    void didEnd(const ObservedExchange& exchange, const std::optional<Error>& error,
                Date end) override {
        const std::lock_guard lock(_mutex);
        Exchange& ended = under(exchange);
        ++ended.ends;
        ended.error = error;
        ended.end = end;
        _changed.notify_all();
    }

    /// All that have started, in that order, once so many have ended; fewer where they do not in
    /// time.
    std::vector<Exchange> whenEnded(std::size_t count) {
        std::unique_lock lock(_mutex);
        _changed.wait_for(lock, timeLimit, [&] {
            return std::count_if(_exchanges.begin(), _exchanges.end(), [](const auto& entry) {
                       return entry.second.ends > 0;
                   }) >= static_cast<std::ptrdiff_t>(count);
        });
        std::vector<Exchange> all;
        for (const auto& [id, exchange] : _exchanges) {
            all.push_back(exchange);
        }
        return all;
    }

    /// Calls for an exchange that has not started or is over, and second starts.
    int faults() const {
        const std::lock_guard lock(_mutex);
        return _faults;
    }

private:
    Exchange& under(const ObservedExchange& exchange) {
        const auto found = _exchanges.find(exchange.id);
        const bool isUnderWay = found != _exchanges.end() && found->second.ends == 0 &&
                                found->second.facts.url == exchange.url &&
                                found->second.facts.start == exchange.start;
        _faults += isUnderWay ? 0 : 1;
        return _exchanges[exchange.id];
    }

    mutable std::mutex _mutex;
    std::condition_variable _changed;
    std::map<std::uint64_t, Exchange> _exchanges;
    int _faults = 0;
};

} // namespace KeloAPI::testing
