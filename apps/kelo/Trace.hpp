#pragma once

#include <KeloAPI/KeloAPI.hpp>

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace KeloHost {

/// Writes what the library's exchanges take into a file that trace viewers of browsers read: a JSON
/// array of events in the Chrome trace format. An exchange begins ("B") and ends ("E"); in between
/// lie its hops, and in each of these the steps ("X"). Exchanges under way at the same time stand
/// on rows of their own ("tid").
///
/// The file is whole after each event: whatever ends the program, Ctrl-C at a question too, leaves
/// what it has done until then, and an exchange that was under way has no end. Nothing secret goes
/// in: neither header fields nor bodies, of a URL no user and no query, of an error its number
/// alone.
class Trace final : public KeloAPI::TrafficObserver {
public:
    /// Replaces the file. Throws a `Failure` where it cannot.
    explicit Trace(std::string path);
    ~Trace() override;

    /// Throws a `Failure` where a part of the file was not written.
    void check() const;

    void didStart(const KeloAPI::ObservedExchange& exchange) override;
    void didFinishHop(const KeloAPI::ObservedExchange& exchange,
                      const KeloAPI::HopReport& hop) override;
    void didEnd(const KeloAPI::ObservedExchange& exchange,
                const std::optional<KeloAPI::Error>& error, KeloAPI::Date end) override;

private:
    using Microseconds = std::chrono::microseconds;

    std::int64_t freeRow() const;
    void writeSteps(const KeloAPI::HopReport& hop, std::int64_t row);
    void write(KeloAPI::Parameters event);
    std::int64_t timeOf(KeloAPI::Date date) const { return (date - _begin).count(); }

    const std::string _path;
    const KeloAPI::Date _begin = KeloAPI::Date::now();
    const int _file;
    mutable std::mutex _mutex;
    /// Of those under way.
    std::map<std::uint64_t, std::int64_t> _rows;
    /// Where the next event goes.
    std::int64_t _size = 0;
    /// The number of the first error in writing; 0 for none.
    int _problem = 0;
};

} // namespace KeloHost
