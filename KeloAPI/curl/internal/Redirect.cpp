#include <KeloAPI/base/internal/Ascii.hpp>
#include <KeloAPI/curl/internal/Redirect.hpp>
#include <KeloAPI/http/HTTPError.hpp>

#include <array>

namespace KeloAPI {

namespace {

/// True where the next request asks for the other place with GET and without the body.
bool becomesGet(int statusCode, Method method) {
    if (statusCode == 303) {
        return method != Method::GET && method != Method::HEAD;
    }
    return (statusCode == 301 || statusCode == 302) && method == Method::POST;
}

void dropBody(URLRequest& request) {
    request.body.reset();
    static constexpr std::string_view prefix = "Content-";
    std::erase_if(request.headerFields, [](const auto& field) {
        return Ascii::equalsIgnoringCase(field.first.substr(0, prefix.size()), prefix);
    });
}

void dropOriginBoundFields(URLRequest& request) {
    constexpr std::array<std::string_view, 3> always = {"Authorization", "Cookie", "Host"};
    for (const std::string_view name : always) {
        if (const auto found = request.headerFields.find(name);
            found != request.headerFields.end()) {
            request.headerFields.erase(found);
        }
    }
    for (const std::string& name : request.originBoundFields) {
        request.headerFields.erase(name);
    }
}

} // namespace

bool isRedirect(int statusCode, const HeaderFields& fields) {
    switch (statusCode) {
    case 301:
    case 302:
    case 303:
    case 307:
    case 308:
        break;
    default:
        return false;
    }
    const auto location = fields.find("Location");
    return location != fields.end() && !location->second.empty();
}

Result<URLRequest> redirected(const URLRequest& request, int statusCode,
                              const HeaderFields& fields) {
    const std::string& location = fields.find("Location")->second;
    const std::optional<URL> target = request.url->resolve(location);
    if (!target || !target->isHTTP()) {
        return httpError(HTTPErrorCode::UnsupportedURL,
                         "the redirect does not lead to an http URL: " + location);
    }
    if (request.url->scheme() == "https" && target->scheme() != "https") {
        return httpError(HTTPErrorCode::ServerTrust, "the redirect leads out of TLS: " + location);
    }
    URLRequest next = request;
    next.url = target;
    if (becomesGet(statusCode, request.method)) {
        next.method = Method::GET;
        dropBody(next);
    }
    if (!target->hasOriginOf(*request.url)) {
        dropOriginBoundFields(next);
    }
    return next;
}

} // namespace KeloAPI
