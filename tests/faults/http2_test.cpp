#include "HTTP2Fault.hpp"
#include "Matrix.hpp"

namespace KeloAPI::testing {

namespace {

using HTTP2Faults = FaultMatrix;

std::vector<Fault> wellAgain() {
    return {over("any response", "", ok, [](FrameConnection& frames, std::uint32_t stream) {
        return frames.write(Frames::response(stream, wellBody));
    })};
}

std::vector<Fault> brokenStreams() {
    std::vector<Fault> faults;
    const std::size_t headSize = head(1).size();
    for (const BreakingOff& way : breakingOff) {
        for (const std::size_t place :
             {std::size_t{0}, std::size_t{1}, std::size_t{8}, std::size_t{9}, headSize,
              headSize + 4, headSize + 9, headSize + 50}) {
            faults.push_back(
                over(std::string("within a response: ") + way.name,
                     "after " + std::to_string(place) + " bytes", way.code,
                     sending(
                         [place](std::uint32_t stream) {
                             return Frames::response(stream, wellBody).substr(0, place);
                         },
                         way.how)));
        }
    }
    return faults;
}

/// Those that HTTP/2 names, and two that it does not.
constexpr std::array<std::uint32_t, 16> codesOfGoAway = {0, 1, 2,  3,  4,  5,  6,  7,
                                                         8, 9, 10, 11, 12, 13, 14, 0xFFFFFFFF};

std::vector<Fault> goingAway() {
    std::vector<Fault> faults;
    const Rule unlessRead = Rule(ok).but(sentOnce, outcomeOf(HTTPErrorCode::ConnectionLost));
    for (const std::uint32_t code : codesOfGoAway) {
        const std::string name = "code " + std::to_string(code);
        faults.push_back(once(over("GOAWAY before the request was looked at", name, unlessRead,
                                   sending([code](std::uint32_t) { return goAwayOf(0, code); }))));
        faults.push_back(over("GOAWAY before the request was looked at, each time", name, lost,
                              sending([code](std::uint32_t) { return goAwayOf(0, code); })));
        faults.push_back(
            over("GOAWAY while the request is worked on, and the end", name, lost,
                 sending([code](std::uint32_t stream) { return goAwayOf(stream, code); },
                         Leave::Close)));
    }
    faults.push_back(over("GOAWAY, and the response", "", ok, sending([](std::uint32_t stream) {
                              return goAwayOf(stream, 0) + Frames::response(stream, wellBody);
                          })));
    return faults;
}

std::vector<Fault> resetStreams() {
    std::vector<Fault> faults;
    const Rule unlessRead = Rule(ok).but(sentOnce, outcomeOf(HTTPErrorCode::ConnectionLost));
    const std::uint32_t refused = 7;
    const std::uint32_t wantsHTTP1 = 13;
    for (std::uint32_t code = 0; code <= 14; ++code) {
        const std::string name = "code " + std::to_string(code);
        const auto reset = sending([code](std::uint32_t stream) { return resetOf(stream, code); });
        if (code == refused || code == wantsHTTP1) {
            faults.push_back(once(
                over(code == refused ? "RST_STREAM: refused, once" : "RST_STREAM: wants HTTP/1.1",
                     "", unlessRead, reset)));
        }
        if (code == wantsHTTP1) {
            continue; // libcurl turns to HTTP/1.1 unless it has passed the head on already
        }
        faults.push_back(over("RST_STREAM before a response", name, lost, reset));
        faults.push_back(
            over("RST_STREAM behind the head", name, lost, sending([code](std::uint32_t stream) {
                     return head(stream) + resetOf(stream, code);
                 })));
        faults.push_back(
            over("RST_STREAM within the body", name, lost, sending([code](std::uint32_t stream) {
                     return head(stream) + dataOf(stream, wellBody.substr(0, 50), false) +
                            resetOf(stream, code);
                 })));
    }
    faults.push_back(over("RST_STREAM without error behind the whole response", "", ok,
                          sending([](std::uint32_t stream) {
                              return Frames::response(stream, wellBody) + resetOf(stream, 0);
                          })));
    return faults;
}

TEST_F(HTTP2Faults, EndEachCallOnceAndAsTheyShould) {
    std::vector<Fault> faults = wellAgain();
    append(faults, brokenStreams());
    append(faults, goingAway());
    append(faults, resetStreams());
    run("HTTP/2", faults);
}

} // namespace

} // namespace KeloAPI::testing
