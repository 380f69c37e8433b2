#include "FaultServer.hpp"
#include "Matrix.hpp"

namespace KeloAPI::testing {

namespace {

using RedirectFaults = FaultMatrix;
using Location = std::function<std::string(const Encounter&)>;

const std::array<const char*, 5> redirects = {"301 Moved", "302 Found", "303 See Other",
                                              "307 Moved", "308 Moved"};

std::vector<Fault> leading(const std::string& row, const Rule& rule, const Location& location) {
    std::vector<Fault> faults;
    for (const char* status : redirects) {
        faults.push_back(
            {.row = row, .variant = status, .rule = rule, .strike = redirecting(status, location)});
    }
    return faults;
}

Location to(const std::string& text) {
    return [text](const Encounter&) { return text; };
}

std::vector<Fault> thatEnd() {
    const Location other = [](const Encounter& at) { return at.around.other.secureUrl("/a"); };
    auto faults = leading("to another host", ok, other);
    append(faults, leading("out of TLS", HTTPErrorCode::ServerTrust,
                           [](const Encounter& at) { return at.around.plain.url("/a"); }));
    append(faults, leading("to a server that is not trusted", HTTPErrorCode::ServerTrust,
                           [](const Encounter& at) { return at.around.stranger.secureUrl("/a"); }));
    append(faults, leading("to where nobody listens", HTTPErrorCode::CannotConnect,
                           to("https://127.0.0.1:1/")));
    append(faults, leading("to a name without address", HTTPErrorCode::CannotFindHost,
                           to("https://" + std::string(70, 'a') + "/")));
    append(faults, leading("to where nobody answers", HTTPErrorCode::TimedOut,
                           [](const Encounter& at) { return "https://" + at.around.deaf.host(); }));
    for (const char* url : {"ftp://127.0.0.1/", "file:///etc/passwd", "javascript:alert(1)",
                            "https://", "a b", "https://[::1/", "https://127.0.0.1:port/"}) {
        for (const char* status : {"302 Found", "307 Moved"}) {
            faults.push_back({.row = "to a URL of another kind than HTTP",
                              .variant = std::string(url) + " by " + status,
                              .rule = HTTPErrorCode::UnsupportedURL,
                              .strike = redirecting(status, to(url))});
        }
    }
    faults.push_back({.row = "into TLS",
                      .rule = ok,
                      .strike = redirecting("307 Moved", other),
                      .speaks = Speaks::Plain});
    faults.push_back({.row = "to another host, with a body without end",
                      .rule = ok,
                      .strike = [](const Encounter& at) {
                          return sayingOn("HTTP/1.1 302 Found\r\nLocation: " +
                                              at.around.other.secureUrl("/a") + "\r\n\r\n",
                                          std::string(16384, 'x'))(at);
                      }});
    return faults;
}

std::vector<Fault> thatDoNotEnd() {
    auto faults = leading("in a circle", HTTPErrorCode::TooManyRedirects, to("/again"));
    append(faults, leading("in a circle by whole URLs", HTTPErrorCode::TooManyRedirects,
                           [](const Encounter& at) { return at.server.url("/again"); }));
    append(faults, leading("to itself under another name", HTTPErrorCode::TooManyRedirects,
                           [](const Encounter& at) {
                               const std::string own = at.server.url("/again");
                               return "https://localhost" + own.substr(own.rfind(':'));
                           }));
    return faults;
}

TEST_F(RedirectFaults, EndEachCallOnceAndAsTheyShould) {
    std::vector<Fault> faults = thatEnd();
    append(faults, thatDoNotEnd());
    run("redirects", faults);
}

} // namespace

} // namespace KeloAPI::testing
