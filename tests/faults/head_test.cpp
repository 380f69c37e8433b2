#include "FaultServer.hpp"
#include "Matrix.hpp"

namespace KeloAPI::testing {

namespace {

using HeadFaults = FaultMatrix;

const std::vector<CallKind> notRepeatable = {CallKind::Act, CallKind::Loops};

Fault refused(const char* variant, const std::string& bytes) {
    return {.row = "what comes is not HTTP",
            .variant = variant,
            .rule = HTTPErrorCode::BadServerResponse,
            .strike = saying(bytes, Leave::Silence)};
}

std::vector<Fault> beforeTheResponse() {
    std::vector<Fault> faults;
    for (const BreakingOff& way : breakingOff) {
        faults.push_back({.row = std::string("before the request is read: ") + way.name,
                          .rule = way.code,
                          .strike = saying("", way.how),
                          .isEarly = true});
    }
    for (const BreakingOff& way : breakingOff) {
        const Rule rule = way.how == Leave::Silence
                              ? Rule(way.code)
                              : Rule(ok).but(notRepeatable, outcomeOf(way.code));
        faults.push_back(
            {.row = std::string("on a kept connection, before the response: ") + way.name,
             .rule = rule,
             .strike = saying("", way.how),
             .isLate = true,
             .isOnce = true});
    }
    for (const BreakingOff& way : breakingOff) {
        faults.push_back({.row = std::string("on a kept connection, within the head: ") + way.name,
                          .rule = way.code,
                          .strike = saying("HTTP/1.1 200 OK\r\nContent-", way.how),
                          .isLate = true});
    }
    return faults;
}

std::vector<Fault> notHTTP() {
    const std::string statusLine = "HTTP/1.1 200 OK\r\n";
    return {refused("SSH", "SSH-2.0-OpenSSH_9.2\r\n"),
            refused("zeros", std::string(4096, '\0')),
            refused("a body without a head", wellBody),
            refused("another version", "HTTP/7.5 200 OK\r\n\r\n"),
            refused("no status", "HTTP/1.1\r\n\r\n"),
            refused("a status that is not a number", "HTTP/1.1 abc OK\r\n\r\n"),
            refused("a status of four digits", "HTTP/1.1 2000 OK\r\n\r\n"),
            refused("a line that is no field", statusLine + "no colon\r\n\r\n"),
            refused("a zero in a field", statusLine + "X: a" + std::string(1, '\0') + "b\r\n\r\n")};
}

std::vector<Fault> endlessHeads() {
    const std::string statusLine = "HTTP/1.1 200 OK\r\n";
    const std::string text(16384, 'x');
    const Rule rule = HTTPErrorCode::BadServerResponse;
    const auto fault = [&](const char* variant, const std::string& begin,
                           const std::string& piece) {
        return Fault{.row = "a head without end",
                     .variant = variant,
                     .rule = rule,
                     .strike = sayingOn(begin, piece)};
    };
    return {fault("fields", statusLine, "X-Some: " + text.substr(0, 1000) + "\r\n"),
            fault("short fields", statusLine, "X: y\r\n"),
            fault("a line of status", "HTTP/1.1 200 ", text),
            fault("a name", statusLine + "X-", text),
            fault("a value", statusLine + "X-Some: ", text),
            fault("interim responses", "", "HTTP/1.1 103 Early Hints\r\nLink: </a>\r\n\r\n"),
            fault("interim responses without fields", "", "HTTP/1.1 100 Continue\r\n\r\n"),
            {.row = "a head byte by byte, without end",
             .rule = HTTPErrorCode::TimedOut,
             .strike = dripping("HTTP/1.1 103 Early Hints\r\nLink: </a>\r\n\r\n"),
             .isSlow = true}};
}

std::vector<Fault> oddHeads() {
    std::string interim;
    for (int i = 0; i < 200; ++i) {
        interim += "HTTP/1.1 103 Early Hints\r\nLink: </a>\r\n\r\n";
    }
    const std::string length = std::to_string(wellBody.size());
    const auto fault = [](const char* variant, const std::string& bytes) {
        return Fault{.row = "an odd head that can be understood",
                     .variant = variant,
                     .rule = ok,
                     .strike = saying(bytes)};
    };
    return {
        {.row = "200 interim responses before the response",
         .rule = ok,
         .strike = saying(interim + answerOf(wellBody))},
        fault("HTTP/1.0", "HTTP/1.0 200 OK\r\nContent-Length: " + length + "\r\n\r\n" + wellBody),
        fault("bare line feeds", "HTTP/1.1 200 OK\nContent-Length: " + length + "\n\n" + wellBody),
        fault("no words behind the status",
              "HTTP/1.1 200\r\nContent-Length: " + length + "\r\n\r\n" + wellBody),
        fault("a field on two lines", "HTTP/1.1 200 OK\r\nX: a\r\n  b\r\nContent-Length: " +
                                          length + "\r\n\r\n" + wellBody),
        fault("a field without value",
              "HTTP/1.1 200 OK\r\nX:\r\nContent-Length:" + length + "\r\n\r\n" + wellBody)};
}

/// Responses that nobody has asked for, none of which may be taken for that to the next request.
std::vector<Fault> strayResponses() {
    const std::string stray = answerOf(strayBody);
    const auto afterTheCall = [](const std::function<void(const Encounter&)>& disturb) {
        return [disturb](const Encounter& encounter) {
            encounter.connection.write(answerOf(wellBody));
            encounter.server.waitForRecovery();
            disturb(encounter);
            encounter.server.tellThatItIsDone(encounter.connection);
            return true;
        };
    };
    return {{.row = "a response before the request is the response to it",
             .rule = ofParsedCalls(outcomeOf(666)),
             .strike = saying(stray),
             .isEarly = true},
            {.row = "two responses to a request",
             .rule = ok,
             .strike = saying(answerOf(wellBody) + stray)},
            {.row = "a response and the half of another",
             .rule = ok,
             .strike = saying(answerOf(wellBody) + stray.substr(0, 30))},
            {.row = "a response while nothing is asked",
             .rule = ok,
             .strike = afterTheCall(
                 [stray](const Encounter& encounter) { encounter.connection.write(stray); }),
             .outlasts = true},
            {.row = "the connection is closed while nothing is asked",
             .rule = ok,
             .strike = afterTheCall([](const Encounter& encounter) {
                 ::shutdown(encounter.connection.socket(), SHUT_RDWR);
             }),
             .outlasts = true}};
}

TEST_F(HeadFaults, EndEachCallOnceAndAsTheyShould) {
    std::vector<Fault> faults = beforeTheResponse();
    // In "HTTP/1.1", the status, the line end; a field's name, its colon, its value, its line end;
    // the head's end.
    append(faults, cutting("within the head", answerOf(wellBody),
                           {1, 6, 10, 12, 16, 17, 22, 30, 40, 48, 66, 71}));
    append(faults, notHTTP());
    append(faults, endlessHeads());
    append(faults, oddHeads());
    append(faults, strayResponses());
    run("head", faults);
}

} // namespace

} // namespace KeloAPI::testing
