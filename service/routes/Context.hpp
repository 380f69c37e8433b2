#pragma once

#include "service/http/FaultScript.hpp"
#include "service/http/RequestLog.hpp"
#include "service/http/Server.hpp"
#include "service/store/Store.hpp"

#include <functional>
#include <string>

namespace KeloService {

/// What the routes work with. It outlives them.
struct Context {
    Store& store;
    RequestLog& log;
    FaultScript& faults;
    std::function<ConnectionCounts()> connections;
    SendRate& mediaRate;
    /// The service's own address, without a final slash: "https://localhost:8443".
    std::string baseUrl;
};

} // namespace KeloService
