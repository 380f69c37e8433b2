#include "service/http/Router.hpp"

#include <algorithm>
#include <charconv>
#include <exception>

namespace KeloService {
namespace {

using Arguments = std::map<std::string, std::string, std::less<>>;

bool matches(const std::vector<std::string>& pattern, const std::vector<std::string>& path,
             Arguments& arguments) {
    if (pattern.size() != path.size()) {
        return false;
    }
    arguments.clear();
    for (std::size_t i = 0; i < path.size(); ++i) {
        if (pattern[i].starts_with(':') && !path[i].empty()) {
            arguments[pattern[i].substr(1)] = path[i];
        } else if (pattern[i] != path[i]) {
            return false;
        }
    }
    return true;
}

} // namespace

std::optional<std::int64_t> parseIdentifier(std::string_view text) {
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool good = error == std::errc() && end == text.data() + text.size() && value > 0;
    return good ? std::optional(value) : std::nullopt;
}

const std::string& Call::argument(std::string_view name) const {
    return arguments.find(name)->second;
}

std::int64_t Call::identifier(std::string_view name) const {
    const std::string& text = argument(name);
    const auto value = parseIdentifier(text);
    if (!value) {
        throw ServiceError(404, ErrorCode::notFound, "There is nothing with the id " + text);
    }
    return *value;
}

void Router::add(const std::string& method, const std::string& pattern, Route route) {
    addStream(method, pattern,
              [route = std::move(route)](const Call& call, RequestBody&) { return route(call); });
    entries_.back().takesStream = false;
}

void Router::addStream(const std::string& method, const std::string& pattern, StreamRoute route) {
    Request shape;
    shape.target = pattern;
    entries_.push_back({method, shape.segments(), std::move(route), true});
}

bool Router::takesStream(const Request& request) const {
    const std::vector<std::string> path = request.segments();
    Arguments arguments;
    const auto found = std::find_if(entries_.begin(), entries_.end(), [&](const Entry& entry) {
        return entry.method == request.method && matches(entry.pattern, path, arguments);
    });
    return found != entries_.end() && found->takesStream;
}

Answer Router::dispatch(const Request& request, RequestBody& body) const {
    const std::vector<std::string> path = request.segments();
    const std::string method = request.method == "HEAD" ? "GET" : request.method;
    bool pathIsKnown = false;
    Arguments arguments;
    for (const Entry& entry : entries_) {
        if (!matches(entry.pattern, path, arguments)) {
            continue;
        }
        if (entry.method == method) {
            return entry.route(Call{request, std::move(arguments)}, body);
        }
        pathIsKnown = true;
    }
    if (pathIsKnown) {
        throw ServiceError(405, ErrorCode::methodNotAllowed,
                           request.method + " is not possible here");
    }
    throw ServiceError(404, ErrorCode::notFound, "There is nothing at this address");
}

Answer Router::answer(const Request& request) const {
    RequestBody none([](const RequestBody::Take&) { return true; });
    return answer(request, none);
}

Answer Router::answer(const Request& request, RequestBody& body) const {
    try {
        return dispatch(request, body);
    } catch (const ServiceError& error) {
        return errorAnswer(error);
    } catch (const std::exception& error) {
        return errorAnswer(ServiceError(500, ErrorCode::internal,
                                        std::string("The service failed: ") + error.what()));
    }
}

} // namespace KeloService
