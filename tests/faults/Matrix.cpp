#include "Matrix.hpp"

#include "Cell.hpp"
#include "support/FreshManager.hpp"
#include "support/GeneratedBlock.hpp"
#include "support/MainLoop.hpp"
#include "support/OwnProcess.hpp"
#include "support/RecordingDelegate.hpp"
#include "support/Sanitizers.hpp"
#include "TimedTransport.hpp"

#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/queues/Diagnostics.hpp>

#include <list>

namespace KeloAPI::testing {

namespace {

constexpr const char* secret = "key-of-the-user";
/// More than what so many calls at a time may keep in memory, and far less than what faulty servers
/// send.
constexpr long maxGrowthInKiB = 300L << 10U;

TransportSettings settings() {
    TransportSettings settings;
    settings.maxBodyBytes = FaultMatrix::maxBody;
    settings.maxHeadBytes = FaultMatrix::maxHead;
    settings.maxIdleConnections = 10'000; // a connection at fault is there when the next call goes
    settings.proxy = "";
    return settings;
}

TransportSettings limitedSettings() {
    TransportSettings limited = settings();
    limited.responseTimeout = FaultMatrix::limit;
    return limited;
}

} // namespace

FaultMatrix::FaultMatrix()
    : _delegate(std::make_shared<RecordingDelegate>())
    , _transport(std::make_shared<TimedTransport>(around.policies(), settings()))
    , _manager(std::make_shared<Manager>(_transport, settings()))
    , _limitedTransport(std::make_shared<TimedTransport>(around.policies(), limitedSettings()))
    , _limitedManager(std::make_shared<Manager>(_limitedTransport, limitedSettings())) {
    Diagnostics::setSink([](std::string_view) {});
    _delegate->sessionKey = secret;
    Api::setSessionDelegate(_delegate);
}

FaultMatrix::~FaultMatrix() {
    endManagers();
    FileManager::sharedGroupManager("/faults/")->kill();
    Api::setSessionDelegate(nullptr);
    Diagnostics::setSink({});
}

void FaultMatrix::endManagers() {
    renewManager(*Api::session(SessionType::Authenticated));
    _manager.reset();
    _transport.reset();
    _limitedManager.reset();
    _limitedTransport.reset();
}

void FaultMatrix::aim(const Fault& fault, const std::string& host,
                      std::chrono::milliseconds silence) {
    const auto& transport = fault.isSlow ? _limitedTransport : _transport;
    transport->silence = silence;
    _delegate->schema = fault.speaks == Speaks::Plain ? "http://" : "https://";
    _delegate->host = host;
    const auto& manager = fault.isSlow ? _limitedManager : _manager;
    Api::session(SessionType::Authenticated)->setSessionManager(manager);
}

void FaultMatrix::run(const std::string& name, const std::vector<Fault>& faults,
                      decltype(&tableOf) block) {
    const long memory = memoryInKiB("VmHWM");
    const auto descriptors = openDescriptors();
    const auto threads = threadNames().size();
    _outcomes.assign(faults.size(), std::vector<Outcome>(_calls.size(), ruledOut));
    runCells(faults);
    if (!isSanitized) {
        EXPECT_LT(memoryInKiB("VmHWM") - memory, maxGrowthInKiB);
    }
    expectNothingLeft();
    endManagers();
    EXPECT_TRUE(eventually([&] {
        return openDescriptors() <= descriptors && threadNames().size() <= threads;
    })) << openDescriptors() - descriptors
        << " descriptors and " << threadNames().size() - threads << " threads remain";
    expectGeneratedBlock(KELO_RELIABILITY_PAGE, "faults: " + name,
                         block(faults, _calls, _outcomes));
}

void FaultMatrix::runCells(const std::vector<Fault>& faults) {
    constexpr std::size_t mostAtATime = 150;
    struct Running {
        std::unique_ptr<Cell> cell;
        Outcome* outcome;
    };
    std::list<Running> running;
    std::vector<std::unique_ptr<Cell>> over;
    const auto advance = [&] {
        for (auto each = running.begin(); each != running.end();) {
            if (each->cell->goOn()) {
                ++each;
                continue;
            }
            *each->outcome = each->cell->outcome();
            over.push_back(std::move(each->cell));
            each = running.erase(each);
        }
    };
    for (std::size_t i = 0; i < faults.size(); ++i) {
        for (std::size_t j = 0; j < _calls.size(); ++j) {
            if (faults[i].rule.of(_calls[j].name, _calls[j].kind) == ruledOut) {
                continue;
            }
            while (running.size() >= mostAtATime) {
                MainQueue::main().runUntil([] { return false; }, std::chrono::milliseconds(2));
                advance();
            }
            running.push_back(
                {std::make_unique<Cell>(*this, faults[i], _calls[j]), &_outcomes[i][j]});
        }
    }
    while (!running.empty()) {
        MainQueue::main().runUntil([] { return false; }, std::chrono::milliseconds(2));
        advance();
    }
    for (const auto& cell : over) {
        cell->expectSilence();
    }
    RecordProperty("cells", static_cast<int>(over.size()));
}

void FaultMatrix::expectNothingLeft() const {
    EXPECT_TRUE(eventually([this] {
        MainQueue::main().drain();
        return _transport->alive() == 0 && _limitedTransport->alive() == 0;
    })) << "requests are kept alive";
    EXPECT_TRUE(_folder.names().empty()) << "half a file remains";
    for (const RawServer* server : {&around.other, &around.stranger}) {
        for (const std::string& request : server->received()) {
            EXPECT_EQ(request.find(secret), std::string::npos) << "the session key went elsewhere";
        }
    }
}

} // namespace KeloAPI::testing
