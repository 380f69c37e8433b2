#pragma once

#include "service/http/Router.hpp"
#include "service/http/Server.hpp"
#include "service/routes/Context.hpp"
#include "service/store/Database.hpp"
#include "service/store/UploadFolder.hpp"

#include <string>
#include <utility>
#include <vector>

namespace KeloService {

/// What a service is started with.
struct Settings {
    /// A loopback address.
    std::string address = "127.0.0.1";
    /// 0 takes any free port.
    int port = 8443;
    /// A file, or ":memory:".
    std::string database = ":memory:";
    /// PEM files.
    std::string certificate;
    std::string key;
    /// User name and session key of the sessions to add.
    std::vector<std::pair<std::string, std::string>> sessions;
    /// JSON file of faults; empty for none.
    std::string faults;
    /// Bytes per second that each file of media is sent with at most; 0 for no limit.
    std::int64_t mediaRate = 0;
    /// Bytes per second that each segment of an upload is read with at most; 0 for no limit.
    std::int64_t uploadRate = 0;
    /// How long an upload takes segments.
    std::int64_t uploadExpirySeconds = 3600;
    /// How long an uploaded video is processed.
    double processingSeconds = 2;
};

/// The whole stand-in. Listens once constructed, answers once started.
class Service {
public:
    /// Throws a std::runtime_error whose text says what is wrong.
    explicit Service(const Settings& settings);

    int port() const { return server_.port(); }
    /// "https://localhost:PORT"
    const std::string& url() const { return context_.baseUrl; }
    void start() { server_.start(); }
    /// Returns once every connection has ended.
    void stop() { server_.stop(); }

private:
    Database database_;
    UploadFolder uploadFolder_;
    Router router_;
    UploadTimes uploadTimes_;
    Server server_;
    Context context_;
};

} // namespace KeloService
