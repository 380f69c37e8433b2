#pragma once

#include <KeloAPI/curl/internal/CurlOrigin.hpp>
#include <KeloAPI/curl/internal/CurlTransfer.hpp>
#include <KeloAPI/curl/internal/TrustStore.hpp>
#include <KeloAPI/http/ServerTrustPolicy.hpp>
#include <KeloAPI/http/TransportSettings.hpp>

#include <curl/curl.h>

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace KeloAPI {

/// One thread that carries transfers over one set of connections. The pins of a transfer's host are
/// part of what libcurl compares before it uses a connection or a TLS session again, so neither
/// crosses from one policy to another.
class NetworkThread : public std::enable_shared_from_this<NetworkThread> {
public:
    /// `name` has 15 characters at most; `connectionsPerHost` is the limit in force here.
    NetworkThread(std::string name, const ServerTrustPolicyManager& trust,
                  TransportSettings settings, std::size_t connectionsPerHost);
    NetworkThread(const NetworkThread&) = delete;
    NetworkThread& operator=(const NetworkThread&) = delete;
    ~NetworkThread();

    const TransportSettings& settings() const { return _settings; }

    /// Starts the thread; throws `std::system_error` where the system has none to give.
    void open();
    /// Takes the transfer over. Throws `std::bad_alloc`.
    void start(std::shared_ptr<CurlTransfer> transfer);
    /// Ends the transfer, unless it is over.
    void cancel(std::shared_ptr<CurlTransfer> transfer);
    /// Cancels everything and lets the thread end.
    void stop();
    bool isCurrentThread() const { return _thread.get_id() == std::this_thread::get_id(); }
    void join() { _thread.join(); }
    /// The thread ends by itself, and keeps this object until then.
    void detach() { _thread.detach(); }

private:
    using Deadline = std::pair<CurlTransfer::Clock::time_point, CurlTransfer*>;
    struct Commands {
        std::vector<std::shared_ptr<CurlTransfer>> starts;
        std::vector<std::shared_ptr<CurlTransfer>> cancels;
        bool stop = false;
    };

    void run();
    void loop();
    void wake();
    bool carryOut(const Commands& commands);
    Commands takeCommands();
    bool restIfIdle();
    void enqueue(const std::shared_ptr<CurlTransfer>& transfer);
    const TrustStore& trustFor(const URL& url);
    CurlOrigin& originOf(const URL& url);
    void sendWaiting();
    void send(CurlTransfer& transfer);
    bool hasSendable() const;
    void finishDone();
    void sendAgain(CurlTransfer& transfer);
    void finishOverdue(CurlTransfer::Clock::time_point now);
    void resumePaused();
    void list(CurlTransfer& transfer);
    void finish(CurlTransfer& transfer, CurlTransfer::Outcome outcome);
    void finishAll(const Error& error);
    int pollTimeout() const;
    void pause() const;
    void cleanUp();

    const std::string _name;
    const ServerTrustPolicyManager _trust;
    const TransportSettings _settings;
    const std::size_t _connectionsPerHost;
    std::thread _thread;

    std::mutex _mutex; // guards what follows, for the threads that give commands
    Commands _commands;
    CURLM* _multi = nullptr;
    bool _stopped = false;
    // Until it is woken. While a command waits, the thread is awake or about to be woken
    // (tests/interleavings).
    bool _resting = false;

    // Only for the thread itself:
    CurlTransfer::Shared _shared;
    /// Of the policies that were needed so far.
    std::map<const ServerTrustPolicy*, TrustStore> _trustStores;
    /// Those that have transfers.
    std::map<std::string, CurlOrigin> _origins;
    std::set<std::shared_ptr<CurlTransfer>> _transfers;
    std::set<Deadline> _deadlines;
    /// When those are sent again that pause before a retry.
    std::set<Deadline> _pauses;
};

} // namespace KeloAPI
