#include "Matrix.hpp"

namespace KeloAPI::testing {

namespace {

using StatusFaults = FaultMatrix;

const std::string page = "<!DOCTYPE html><html><body>busy</body></html>";

Rule butNoFile(const Rule& rule) {
    return rule.but({CallKind::File}, outcomeOf(HTTPErrorCode::HTTPStatus));
}

std::vector<Fault> withoutBody() {
    std::vector<Fault> faults;
    for (const char* status : {"204 No Content", "304 Not Modified"}) {
        for (const char* fields : {"", "Content-Length: 0\r\n", "Content-Length: 100\r\n"}) {
            faults.push_back(
                {.row = std::string(status) + ", which has no body",
                 .variant = fields,
                 .rule = butNoFile(ofParsedCalls(HTTPErrorCode::EmptyBody)),
                 .strike = saying(std::string("HTTP/1.1 ") + status + "\r\n" + fields + "\r\n")});
        }
        faults.push_back({.row = std::string(status) + ", and a body all the same",
                          .rule = butNoFile(ofParsedCalls(HTTPErrorCode::EmptyBody)),
                          .strike = saying(answerOf(strayBody, status))});
    }
    return faults;
}

std::vector<Fault> oddStatuses() {
    std::vector<Fault> faults;
    for (const char* status : {"205 Reset Content", "206 Partial Content", "300 Multiple Choices",
                               "302 Found", "305 Use Proxy", "600 Odd", "999 Odd"}) {
        faults.push_back(
            {.row = "an odd status with a good body: 205, 206, 300, 302, 305, 600, 999",
             .variant = status,
             .rule = butNoFile(ok),
             .strike = saying(answerOf(wellBody, status))});
    }
    for (const char* status : {"201 Created", "202 Accepted", "203 Other", "299 Odd"}) {
        faults.push_back({.row = "another status of success: 201, 202, 203, 299",
                          .variant = status,
                          .rule = ok,
                          .strike = saying(answerOf(wellBody, status))});
    }
    faults.push_back({.row = "101, which nobody asked for",
                      .rule = HTTPErrorCode::BadServerResponse,
                      .strike = saying("HTTP/1.1 101 Switching Protocols\r\nUpgrade: x\r\n"
                                       "Connection: Upgrade\r\n\r\n" +
                                           wellBody,
                                       Leave::Farewell)});
    return faults;
}

/// A call is judged by its body alone.
std::vector<Fault> statusesOfFailure() {
    std::vector<Fault> faults;
    for (const char* status :
         {"400 Bad Request", "401 Unauthorized", "403 Forbidden", "404 Not Found",
          "405 Method Not Allowed", "408 Request Timeout", "409 Conflict", "413 Too Large",
          "429 Too Many", "500 Internal Error", "501 Not Implemented", "502 Bad Gateway",
          "503 Unavailable", "504 Gateway Timeout", "511 Sign In"}) {
        const std::string row = std::string(1, status[0]) + "xx with ";
        const auto add = [&](const char* what, const Rule& rule, const std::string& body) {
            faults.push_back({.row = row + what,
                              .variant = status,
                              .rule = butNoFile(rule),
                              .strike = saying(answerOf(body, status))});
        };
        add("a good body", ok, wellBody);
        add("an error of the service", ofParsedCalls(outcomeOf(7)), R"({"error":"No.","code":7})");
        add("JSON of another kind", ofParsedCalls(noData), R"({"message":"No."})");
        add("a page", ofParsedCalls(HTTPErrorCode::BadJson), page);
        add("nothing", ofParsedCalls(HTTPErrorCode::EmptyBody), "");
    }
    return faults;
}

TEST_F(StatusFaults, EndEachCallOnceAndAsTheyShould) {
    std::vector<Fault> faults = withoutBody();
    append(faults, oddStatuses());
    append(faults, statusesOfFailure());
    run("status", faults);
}

} // namespace

} // namespace KeloAPI::testing
