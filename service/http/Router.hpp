#pragma once

#include "service/http/Answer.hpp"
#include "service/http/Request.hpp"
#include "service/http/RequestBody.hpp"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace KeloService {

/// The text as a positive number; absent when it is none.
std::optional<std::int64_t> parseIdentifier(std::string_view text);

/// A request on its way into a route, with the path's variable segments by name.
struct Call {
    const Request& request;
    std::map<std::string, std::string, std::less<>> arguments;

    const std::string& argument(std::string_view name) const;
    /// The argument as a positive number; throws a "not found" ServiceError otherwise.
    std::int64_t identifier(std::string_view name) const;
};

using Route = std::function<Answer(const Call&)>;
/// A route for bodies that are too large to be held.
using StreamRoute = std::function<Answer(const Call&, RequestBody&)>;

/// Finds the route for a request. Filled before the server starts, only read afterwards.
class Router {
public:
    /// A segment of `pattern` that begins with a colon stands for any text that is not empty:
    /// "/timelines/users/:id". Among patterns that match, the one added first is used.
    void add(const std::string& method, const std::string& pattern, Route route);
    /// The same for a route that takes the body as it arrives: the request's own is empty.
    void addStream(const std::string& method, const std::string& pattern, StreamRoute route);
    /// Whether the route for the request takes the body as it arrives.
    bool takesStream(const Request& request) const;
    /// Never throws: what a route throws becomes an error answer. `body` is for routes that take
    /// it as it arrives.
    Answer answer(const Request& request, RequestBody& body) const;
    Answer answer(const Request& request) const;

private:
    struct Entry {
        std::string method;
        std::vector<std::string> pattern;
        StreamRoute route;
        bool takesStream = false;
    };
    Answer dispatch(const Request& request, RequestBody& body) const;

    std::vector<Entry> entries_;
};

} // namespace KeloService
