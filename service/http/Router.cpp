#include "service/http/Router.hpp"

#include <algorithm>
#include <exception>
#include <utility>

namespace KeloService {
namespace {

bool matches(const std::vector<std::string>& pattern, const std::vector<std::string>& path) {
    return std::equal(pattern.begin(), pattern.end(), path.begin(), path.end(),
                      [](const std::string& expected, const std::string& segment) {
                          return expected == segment ||
                                 (expected.starts_with(':') && !segment.empty());
                      });
}

} // namespace

const std::string& Call::argument(std::string_view name) const {
    return arguments.find(name)->second;
}

std::int64_t Call::identifier(std::string_view name) const {
    const std::string& text = argument(name);
    const auto value = parseNumber<std::int64_t>(text);
    if (!value || *value <= 0) {
        throw ServiceError(404, "There is nothing with the id " + text);
    }
    return *value;
}

void Router::add(const std::string& method, const std::string& pattern, Route route, Body body) {
    Request shape;
    shape.target = pattern;
    entries_.push_back({method, shape.segments(), std::move(route), body});
}

bool Router::takesStream(const Request& request) const {
    const std::vector<std::string> path = request.segments();
    return std::any_of(entries_.begin(), entries_.end(), [&](const Entry& entry) {
        return entry.body == Body::Streamed && entry.method == request.method &&
               matches(entry.pattern, path);
    });
}

Answer Router::dispatch(const Request& request, RequestBody& body) const {
    const std::vector<std::string> path = request.segments();
    const std::string method = request.method == "HEAD" ? "GET" : request.method;
    bool pathIsKnown = false;
    for (const Entry& entry : entries_) {
        if (!matches(entry.pattern, path)) {
            continue;
        }
        pathIsKnown = true;
        if (entry.method == method) {
            Call call{request, body, {}};
            for (std::size_t i = 0; i < path.size(); ++i) {
                if (entry.pattern[i].starts_with(':')) {
                    call.arguments[entry.pattern[i].substr(1)] = path[i];
                }
            }
            return entry.route(call);
        }
    }
    throw pathIsKnown ? ServiceError(405, request.method + " is not possible here")
                      : ServiceError(404, "There is nothing at this address");
}

Answer Router::answer(const Request& request, RequestBody& body) const {
    try {
        return dispatch(request, body);
    } catch (const ServiceError& error) {
        return errorAnswer(error);
    } catch (const std::exception& error) {
        return errorAnswer(ServiceError(500, std::string("The service failed: ") + error.what()));
    }
}

} // namespace KeloService
