#pragma once

#include "service/http/Server.hpp"
#include "service/store/Database.hpp"
#include "service/store/UploadFolder.hpp"

#include <atomic>
#include <cstdint>
#include <string>

namespace KeloService {

/// How long uploads and the work on them take. Safe to use from any thread.
struct UploadTimes {
    std::int64_t expirySeconds = 3600;
    /// From finalizing to the end of the processing.
    std::atomic<double> processingSeconds = 2;
};

/// What the routes work with. It outlives them.
struct Context {
    Database& database;
    const UploadFolder& uploadFolder;
    Server& server;
    UploadTimes& uploadTimes;
    /// The service's own address, without a final slash: "https://localhost:8443".
    std::string baseUrl;
};

} // namespace KeloService
