#pragma once

#include "Calls.hpp"
#include "Fault.hpp"
#include "support/TemporaryFolder.hpp"
#include "Surroundings.hpp"
#include "Table.hpp"

#include <KeloAPI/http/Manager.hpp>

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace KeloAPI::testing {

class RecordingDelegate;
class TimedTransport;

/// Every call under each fault, many at a time, each towards a server of its own. Each has to
/// complete once, on the main queue, as the fault's rule says and in its time; after it the same
/// call to the same server, which is well by then, has to succeed.
class FaultMatrix : public ::testing::Test {
public:
    /// No byte may move for so long where that is what a fault comes to; else nothing is limited.
    static constexpr std::chrono::milliseconds limit{1000};
    /// Bytes that a response kept in memory may have, and its head.
    static constexpr std::size_t maxBody = std::size_t{1} << 20U;
    static constexpr std::size_t maxHead = std::size_t{16} << 10U;

protected:
    FaultMatrix();
    ~FaultMatrix() override;

    /// Runs all cells of these faults and compares what came of them with the block of that name in
    /// docs/reliability.md.
    void run(const std::string& name, const std::vector<Fault>& faults,
             decltype(&tableOf) block = &tableOf);

    Surroundings around;

private:
    friend class Cell;

    void runCells(const std::vector<Fault>& faults);
    /// Has the next call go there.
    void aim(const Fault& fault, const std::string& host, std::chrono::milliseconds silence);
    void expectNothingLeft() const;
    void endManagers();

    TemporaryFolder _folder;
    std::vector<Call> _calls = allCalls(_folder.path());
    std::shared_ptr<RecordingDelegate> _delegate;
    std::shared_ptr<TimedTransport> _transport;
    std::shared_ptr<Manager> _manager;
    /// Under which a whole response has a limit.
    std::shared_ptr<TimedTransport> _limitedTransport;
    std::shared_ptr<Manager> _limitedManager;
    std::vector<std::vector<Outcome>> _outcomes; // of each fault, of each call
};

} // namespace KeloAPI::testing
