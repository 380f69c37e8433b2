#include "service/http/RequestLog.hpp"

#include "service/DateText.hpp"
#include "service/http/Base64.hpp"

#include <chrono>
#include <utility>

namespace KeloService {
namespace {

std::string nowText() {
    using namespace std::chrono;
    const auto sinceEpoch = system_clock::now().time_since_epoch();
    return dateText(duration_cast<milliseconds>(sinceEpoch).count());
}

} // namespace

void RequestLog::add(const Request& request, std::uint64_t bodyBytes,
                     std::optional<std::string> bodySha256) {
    std::string time = nowText();
    const std::lock_guard lock(mutex_);
    entries_.push_back({++last_, std::move(time), request, bodyBytes, std::move(bodySha256)});
    if (entries_.size() > keptEntries) {
        entries_.pop_front();
    }
}

Json RequestLog::describe(const Entry& entry) {
    Json headers = Json::array();
    for (const auto& [name, value] : entry.request.headers) {
        headers.push_back(Json::array({name, value}));
    }
    Json record{{"number", entry.number},
                {"receivedAt", entry.receivedAt},
                {"connection", entry.request.connection},
                {"method", entry.request.method},
                {"target", entry.request.target},
                {"path", entry.request.path()},
                {"query", entry.request.rawQuery()},
                {"headers", headers},
                {"body", encodeBase64(entry.request.body)},
                {"bodyBytes", entry.bodyBytes}};
    if (entry.bodySha256) {
        record["bodySha256"] = *entry.bodySha256;
    }
    return record;
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
