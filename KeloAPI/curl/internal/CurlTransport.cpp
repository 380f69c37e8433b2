#include <KeloAPI/curl/internal/CurlTransfer.hpp>
#include <KeloAPI/curl/internal/CurlTransport.hpp>
#include <KeloAPI/curl/internal/NetworkThread.hpp>
#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/http/internal/makeTransport.hpp>
#include <KeloAPI/queues/internal/ExitGuard.hpp>
#include <KeloAPI/queues/SerialQueue.hpp>

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <exception>

namespace KeloAPI {

namespace {

/// One network thread's share of the settings.
TransportSettings shareOf(TransportSettings settings, std::size_t threads) {
    rlimit descriptors{};
    if (::getrlimit(RLIMIT_NOFILE, &descriptors) == 0) {
        settings.maxIdleConnections =
            std::min<std::size_t>(settings.maxIdleConnections, descriptors.rlim_cur / 4);
    }
    settings.maxIdleConnections /= threads;
    return settings;
}

} // namespace

CurlTransport::CurlTransport(const ServerTrustPolicyManager& trust,
                             const TransportSettings& settings)
    : _trust(trust)
    , _settings(settings)
    , _process(::getpid()) {}

CurlTransport::~CurlTransport() {
    if (_process != ::getpid()) {
        return; // the threads did not come along into this forked child
    }
    bool onNetworkThread = false;
    for (const auto& thread : _threads) {
        if (thread) {
            thread->stop();
            onNetworkThread = onNetworkThread || thread->isCurrentThread();
        }
    }
    for (const auto& thread : _threads) {
        if (!thread) {
            continue;
        }
        // On a network thread nobody may wait for it; and the threads of an exiting process are
        // parked for good.
        if (onNetworkThread || ExitGuard::isExiting()) {
            thread->detach();
        } else {
            thread->join();
        }
    }
}

std::shared_ptr<Exchange> CurlTransport::start(const URLRequest& request,
                                               std::shared_ptr<ExchangeObserver> observer,
                                               TransferKind kind) {
    try {
        const auto thread = threadFor(kind);
        const auto transfer = std::make_shared<CurlTransfer>(request, observer, thread);
        thread->start(transfer);
        return transfer;
    } catch (const std::exception& failure) { // no thread, no descriptor or no memory
        // The caller must not hear of the end inside its call. The queue goes when its one task has
        // run.
        auto error = httpError(HTTPErrorCode::OutOfResources,
                               std::string("no network thread: ") + failure.what());
        SerialQueue("kelo-no-net")
            .asyncOrOnMain([observer = std::move(observer), error = std::move(error)] {
                observer->didComplete(error);
            });
        return nullptr;
    }
}

/// Throws `std::system_error` where a thread cannot be made.
std::shared_ptr<NetworkThread> CurlTransport::threadFor(TransferKind kind) {
    const std::lock_guard lock(_mutex);
    auto& thread = _threads.at(static_cast<std::size_t>(kind));
    if (!thread) {
        const bool downloads = kind == TransferKind::Download;
        const std::size_t connections = downloads ? _settings.maxDownloadConnectionsPerHost
                                                  : _settings.maxCallConnectionsPerHost;
        auto made = std::make_shared<NetworkThread>(downloads ? "kelo-downloads" : "kelo-calls",
                                                    _trust, shareOf(_settings, _threads.size()),
                                                    std::max<std::size_t>(connections, 1));
        made->open();
        thread = std::move(made);
    }
    return thread;
}

std::shared_ptr<Transport> makeTransport(const ServerTrustPolicyManager& trust,
                                         const TransportSettings& settings) {
    return std::make_shared<CurlTransport>(trust, settings);
}

} // namespace KeloAPI
