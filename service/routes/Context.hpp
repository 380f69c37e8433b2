#pragma once

#include "service/http/FaultScript.hpp"
#include "service/http/RequestLog.hpp"
#include "service/http/Server.hpp"
#include "service/store/Store.hpp"

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

namespace KeloService {

/// How long uploads and the work on them take. Safe to use from any thread.
struct UploadTimes {
    std::atomic<std::int64_t> expirySeconds = 3600;
    /// From finalizing to the end of the processing.
    std::atomic<double> processingSeconds = 2;
};

/// What the routes work with. It outlives them.
struct Context {
    Store& store;
    RequestLog& log;
    FaultScript& faults;
    std::function<ConnectionCounts()> connections;
    SendRate& mediaRate;
    SendRate& uploadRate;
    UploadTimes& uploads;
    /// The service's own address, without a final slash: "https://localhost:8443".
    std::string baseUrl;
};

} // namespace KeloService
