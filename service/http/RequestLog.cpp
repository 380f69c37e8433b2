#include "service/http/RequestLog.hpp"

#include "service/Clock.hpp"
#include "service/Encoding.hpp"

#include <utility>

namespace KeloService {

void RequestLog::add(const Request& request, std::uint64_t bodyBytes,
                     const std::string& bodySha256) {
    Json headers = Json::array();
    for (const auto& [name, value] : request.headers) {
        headers.push_back(Json::array({name, value}));
    }
    Json entry{{"number", 0},
               {"receivedAt", dateText(currentMilliseconds())},
               {"connection", request.connection},
               {"method", request.method},
               {"target", request.target},
               {"path", request.path()},
               {"query", request.rawQuery()},
               {"headers", headers},
               {"body", encodeBase64(request.body)},
               {"bodyBytes", bodyBytes}};
    if (!bodySha256.empty()) {
        entry["bodySha256"] = bodySha256;
    }
    const std::lock_guard lock(mutex_);
    entry["number"] = ++last_;
    entries_.push_back(std::move(entry));
    if (entries_.size() > keptEntries) {
        entries_.pop_front();
    }
}

Json RequestLog::list(std::uint64_t since) const {
    Json requests = Json::array();
    const std::lock_guard lock(mutex_);
    for (const Json& entry : entries_) {
        if (entry.at("number") > since) {
            requests.push_back(entry);
        }
    }
    return {{"last", last_}, {"requests", requests}};
}

void RequestLog::clear() {
    const std::lock_guard lock(mutex_);
    entries_.clear();
}

} // namespace KeloService
