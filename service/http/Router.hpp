#pragma once

#include "service/http/Answer.hpp"
#include "service/http/Request.hpp"

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace KeloService {

/// A request on its way into a route, with the path's variable segments by name.
struct Call {
    const Request& request;
    /// For routes that take the body as it arrives; the request's own is empty then.
    RequestBody& body;
    std::map<std::string, std::string, std::less<>> arguments;

    const std::string& argument(std::string_view name) const;
    /// The argument as a positive number; throws a "not found" ServiceError otherwise.
    std::int64_t identifier(std::string_view name) const;
};

/// Finds the route for a request. Filled before the server starts, only read afterwards.
class Router {
public:
    using Route = std::function<Answer(const Call&)>;
    /// Whether a route gets the body as a whole, or takes it as it arrives because it is too large
    /// to be held.
    enum class Body { Held, Streamed };

    /// A segment of `pattern` that begins with a colon stands for any text that is not empty:
    /// "/timelines/users/:id". Among patterns that match, the one added first is used.
    void add(const std::string& method, const std::string& pattern, Route route,
             Body body = Body::Held);
    /// Whether the route for the request takes the body as it arrives.
    bool takesStream(const Request& request) const;
    /// Never throws: what a route throws becomes an error answer.
    Answer answer(const Request& request, RequestBody& body) const;

private:
    struct Entry {
        std::string method;
        std::vector<std::string> pattern;
        Route route;
        Body body = Body::Held;
    };
    Answer dispatch(const Request& request, RequestBody& body) const;

    std::vector<Entry> entries_;
};

} // namespace KeloService
