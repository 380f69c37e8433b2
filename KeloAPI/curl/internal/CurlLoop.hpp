#pragma once

#include <KeloAPI/curl/internal/CurlTransfer.hpp>
#include <KeloAPI/curl/internal/TrustStore.hpp>

#include <curl/curl.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace KeloAPI {

/// A lane: one thread that carries all exchanges with the hosts of one policy. Connections, TLS
/// sessions and cookies belong to the lane and so never cross from one policy to another.
class CurlLoop : public std::enable_shared_from_this<CurlLoop> {
public:
    struct Limits {
        std::size_t connectionsPerHost;
        std::size_t idleConnections;
    };

    CurlLoop(TrustStore trust, std::string name, Limits limits);
    CurlLoop(const CurlLoop&) = delete;
    CurlLoop& operator=(const CurlLoop&) = delete;
    ~CurlLoop();

    /// Starts the thread; throws `std::system_error` where the system has none to give.
    void open();
    /// Takes the exchange's next leg over, or refuses because the lane has been stopped.
    bool start(std::shared_ptr<CurlExchange> exchange);
    /// Ends the exchange if one of its legs is under way here.
    void cancel(std::shared_ptr<CurlExchange> exchange);
    /// Cancels everything and lets the thread end.
    void stop();
    bool isCurrentThread() const { return _thread.get_id() == std::this_thread::get_id(); }
    void join() { _thread.join(); }
    /// The thread ends by itself, and keeps the lane until then.
    void detach() { _thread.detach(); }

private:
    using Deadline = std::pair<CurlTransfer::Clock::time_point, CurlTransfer*>;
    struct Commands {
        std::vector<std::shared_ptr<CurlExchange>> starts;
        std::vector<std::shared_ptr<CurlExchange>> cancels;
        bool stop = false;
    };

    void run();
    void loop();
    void wake();
    bool carryOut(const Commands& commands);
    void useTheWait();
    Commands takeCommands();
    bool hasStarts();
    void enqueue(const std::shared_ptr<CurlExchange>& exchange);
    CurlOrigin& originOf(const URL& url);
    void sendWaiting();
    void send(CurlTransfer& transfer);
    bool hasSendable() const;
    void finishDone();
    void sendAgain(CurlTransfer& transfer);
    void finishOverdue();
    void finish(CurlTransfer& transfer, CurlTransfer::Outcome outcome);
    void finishAll(const Error& error);
    int pollTimeout() const;
    void pause() const;
    void cleanUp();

    const TrustStore _trust;
    const std::string _name;
    const Limits _limits;
    std::thread _thread;

    std::mutex _mutex; // guards what follows, for the threads that give commands
    Commands _commands;
    CURLM* _multi = nullptr;
    bool _stopped = false;

    // Only for the lane's thread:
    CURLSH* _cookies = nullptr;
    CurlSockets _sockets;
    /// Those that have transfers.
    std::map<std::string, CurlOrigin> _origins;
    std::map<CurlExchange*, std::unique_ptr<CurlTransfer>> _transfers;
    std::vector<CurlTransfer*> _begun;                 // and not yet sent
    std::vector<std::unique_ptr<CurlTransfer>> _ended; // and told of
    std::set<Deadline> _deadlines;
};

} // namespace KeloAPI
