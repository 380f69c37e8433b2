#include "support/GeneratedBlock.hpp"

#include <KeloAPI/curl/internal/Redirect.hpp>
#include <KeloAPI/http/HTTPError.hpp>

#include <gtest/gtest.h>

#include <array>

namespace KeloAPI::testing {
namespace {

/// Where a redirect from `start` leads.
struct Place {
    const char* kind;
    const char* location;
    const char* url; ///< Empty where it leads nowhere.
    bool hasSameOrigin = true;
};

const char* const start = "https://api.example/a/b?c=d#e";

std::vector<Place> places() {
    const char* own = "within the origin";
    const char* other = "to another origin";
    const char* nowhere = "to a URL of another kind than HTTP";
    const char* plain = "out of TLS";
    return {
        {own, "/x", "https://api.example/x"},
        {own, "x", "https://api.example/a/x"},
        {own, "./x", "https://api.example/a/x"},
        {own, "../x", "https://api.example/x"},
        {own, "../../../x", "https://api.example/x"},
        {own, "/x/../y", "https://api.example/y"},
        {own, "?q", "https://api.example/a/b?q"},
        {own, "//api.example/x", "https://api.example/x"},
        {own, "https://api.example/x?q", "https://api.example/x?q"},
        {own, "https://api.example:443/x", "https://api.example:443/x"},
        {own, "HTTPS://api.example/x", "HTTPS://api.example/x"},
        {other, "//other.example/x", "https://other.example/x", false},
        {other, "https://other.example/x", "https://other.example/x", false},
        {other, "https://api.example:444/x", "https://api.example:444/x", false},
        {other, "https://www.api.example/x", "https://www.api.example/x", false},
        {other, "https://api.example.other.example/", "https://api.example.other.example/", false},
        {plain, "http://api.example/x", ""},
        {plain, "http://other.example/x", ""},
        {plain, "http://api.example:443/x", ""},
        {nowhere, "ftp://api.example/x", ""},
        {nowhere, "file:///x", ""},
        {nowhere, "javascript:x", ""},
        {nowhere, "data:,x", ""},
        {nowhere, "mailto:a@api.example", ""},
        {nowhere, "https://", ""},
        {nowhere, "https:///x", ""},
        {nowhere, "https://[::1/x", ""},
        {nowhere, "https://api.example:port/x", ""},
        {nowhere, "a b", ""}};
}

constexpr std::array methods = {Method::GET, Method::HEAD,  Method::POST,
                                Method::PUT, Method::PATCH, Method::DELETE};

URLRequest asking(Method method) {
    URLRequest request;
    request.url = URL::parse(start);
    request.method = method;
    request.body = Data(std::string("body"));
    request.headerFields = {{"Content-Type", "text/plain"},
                            {"X-Session", "s"},
                            {"Authorization", "a"},
                            {"Cookie", "c"},
                            {"Host", "h"},
                            {"X-Plain", "p"}};
    request.originBoundFields = {"X-Session"};
    return request;
}

/// Which methods a redirect keeps, with their bodies, by RFC 9110.
bool keepsMethod(int status, Method method) {
    const bool reads = method == Method::GET || method == Method::HEAD;
    const bool repeats = status == 307 || status == 308;
    return reads || repeats || (status != 303 && method != Method::POST);
}

bool isRight(const Place& place, int status, Method method, const Result<URLRequest>& next) {
    if (*place.url == '\0') {
        const auto code = std::string(place.kind) == "out of TLS" ? HTTPErrorCode::ServerTrust
                                                                  : HTTPErrorCode::UnsupportedURL;
        return !next && isHTTPError(next.error(), code);
    }
    if (!next) {
        return false;
    }
    const URLRequest& request = next.value();
    const bool keeps = keepsMethod(status, method);
    bool fieldsFit = request.headerFields.contains("X-Plain") &&
                     request.headerFields.contains("Content-Type") == keeps;
    for (const char* bound : {"X-Session", "Authorization", "Cookie", "Host"}) {
        fieldsFit = fieldsFit && request.headerFields.contains(bound) == place.hasSameOrigin;
    }
    return fieldsFit && request.url->absoluteString() == place.url &&
           request.method == (keeps ? method : Method::GET) && request.body.has_value() == keeps;
}

TEST(RedirectTableTest, EachStatusMethodAndPlaceLeadsWhereItShould) {
    std::vector<std::pair<std::string, std::pair<int, int>>> rows;
    for (const Place& place : places()) {
        if (rows.empty() || rows.back().first != place.kind) {
            rows.emplace_back(place.kind, std::pair(0, 0));
        }
        auto& [cases, right] = rows.back().second;
        for (const int status : {301, 302, 303, 307, 308}) {
            for (const Method method : methods) {
                const auto next =
                    redirected(asking(method), status, {{"Location", place.location}});
                const bool fits = isRight(place, status, method, next);
                EXPECT_TRUE(fits) << status << ' ' << name(method) << ' ' << place.location << ": "
                                  << (next ? next.value().url->absoluteString()
                                           : next.error().description());
                ++cases;
                right += fits ? 1 : 0;
            }
        }
    }
    std::string table = "| Redirects | Cases | as expected |\n| --- | --- | --- |\n";
    for (const auto& [kind, counts] : rows) {
        table += "| " + kind + " | " + std::to_string(counts.first) + " | " +
                 std::to_string(counts.second) + " |\n";
    }
    expectGeneratedBlock(KELO_RELIABILITY_PAGE, "redirects", table);
}

} // namespace
} // namespace KeloAPI::testing
