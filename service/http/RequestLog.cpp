#include "service/http/RequestLog.hpp"

#include "service/http/Base64.hpp"

#include <chrono>
#include <cstdio>
#include <ctime>

namespace KeloService {
namespace {

std::string nowText() {
    using namespace std::chrono;
    const auto now = system_clock::now();
    const std::time_t seconds = system_clock::to_time_t(now);
    const auto milliseconds = duration_cast<std::chrono::milliseconds>(now.time_since_epoch());
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    char date[32];
    std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &parts);
    char text[48];
    std::snprintf(text, sizeof text, "%s.%03dZ", date,
                  static_cast<int>(milliseconds.count() % 1000));
    return text;
}

} // namespace

void RequestLog::add(const Request& request, std::uint64_t bodyBytes) {
    std::string time = nowText();
    const std::lock_guard lock(mutex_);
    entries_.push_back({++last_, std::move(time), request, bodyBytes});
    if (entries_.size() > keptEntries) {
        entries_.pop_front();
    }
}

Json RequestLog::describe(const Entry& entry) {
    Json headers = Json::array();
    for (const auto& [name, value] : entry.request.headers) {
        headers.push_back(Json::array({name, value}));
    }
    return {{"number", entry.number},
            {"receivedAt", entry.receivedAt},
            {"connection", entry.request.connection},
            {"method", entry.request.method},
            {"target", entry.request.target},
            {"path", entry.request.path()},
            {"query", entry.request.rawQuery()},
            {"headers", headers},
            {"body", encodeBase64(entry.request.body)},
            {"bodyBytes", entry.bodyBytes}};
}

Json RequestLog::list(std::uint64_t since) const {
    Json requests = Json::array();
    const std::lock_guard lock(mutex_);
    for (const Entry& entry : entries_) {
        if (entry.number > since) {
            requests.push_back(describe(entry));
        }
    }
    return {{"last", last_}, {"requests", requests}};
}

void RequestLog::clear() {
    const std::lock_guard lock(mutex_);
    entries_.clear();
}

} // namespace KeloService
