#include "HTTP2Fault.hpp"
#include "Matrix.hpp"

namespace KeloAPI::testing {

namespace {

using HTTP2FrameFaults = FaultMatrix;

std::vector<Fault> floods() {
    const auto flooding = [](MakeFrames piece, std::size_t times, bool answers) {
        return [=](FrameConnection& frames, std::uint32_t stream) {
            std::string pieces;
            for (int i = 0; i < 100; ++i) {
                pieces += piece(stream);
            }
            bool goesOn = true;
            for (std::size_t i = 0; goesOn && i < times; i += 100) {
                goesOn = frames.write(pieces);
            }
            return goesOn && answers ? frames.write(Frames::response(stream, wellBody)) : goesOn;
        };
    };
    const auto settings = [](std::uint32_t) { return Frames::frame(Frames::Settings, 0, 0, ""); };
    const auto pings = [](std::uint32_t) {
        return Frames::frame(Frames::Ping, 0, 0, std::string(8, 'x'));
    };
    const auto interim = [](std::uint32_t stream) {
        return head(stream, std::string("\x08\x03", 2) + "103");
    };
    Fault closed = over("a window that stays closed behind 1,000 bytes", "",
                        Rule(ok).but({"large segment"}, outcomeOf(HTTPErrorCode::TimedOut)),
                        [](FrameConnection& frames, std::uint32_t stream) {
                            return frames.write(Frames::response(stream, wellBody));
                        });
    closed.window = 1000;
    return {closed,
            over("300 SETTINGS, then the response", "", ok, flooding(settings, 300, true)),
            over("300 PINGs, then the response", "", ok, flooding(pings, 300, true)),
            over("100 interim responses, then the response", "", ok, flooding(interim, 100, true)),
            over("10,000 SETTINGS, and no response", "", HTTPErrorCode::TimedOut,
                 flooding(settings, 10'000, false)),
            over("10,000 PINGs, and no response", "", HTTPErrorCode::TimedOut,
                 flooding(pings, 10'000, false)),
            over("interim responses without end", "", HTTPErrorCode::BadServerResponse,
                 flooding(interim, SIZE_MAX, false)),
            over("a body without end, silent after 16 MB", "",
                 Rule(HTTPErrorCode::BodyTooLarge)
                     .but({CallKind::File}, outcomeOf(HTTPErrorCode::TimedOut)),
                 [](FrameConnection& frames, std::uint32_t stream) {
                     bool goesOn = frames.write(head(stream));
                     for (int i = 0; goesOn && i < 1000; ++i) {
                         goesOn = frames.write(dataOf(stream, std::string(16384, ' '), false));
                     }
                     return goesOn;
                 })};
}

std::vector<Fault> hugeHeads() {
    std::vector<Fault> faults;
    const auto endless = [](bool continues) {
        return [continues](FrameConnection& frames, std::uint32_t stream) {
            bool goesOn = frames.write(head(stream, Frames::status200, 0));
            const std::string piece =
                continues ? Frames::field("x-some", std::string(100, 'x')) : std::string();
            for (int i = 0; goesOn && i < 1'000'000; ++i) {
                goesOn = frames.write(Frames::Continuation, 0, stream, piece);
            }
            return goesOn;
        };
    };
    faults.push_back(
        over("a head without end", "of fields", HTTPErrorCode::BadServerResponse, endless(true)));
    faults.push_back(over("a head without end", "of empty frames", HTTPErrorCode::BadServerResponse,
                          endless(false)));
    faults.push_back(
        over("a head of 300 kB", "", HTTPErrorCode::BadServerResponse,
             [](FrameConnection& frames, std::uint32_t stream) {
                 std::string fields = Frames::status200;
                 for (int i = 0; i < 3000; ++i) {
                     fields += Frames::field("x-some", std::string(100, 'x'));
                 }
                 bool goesOn = frames.write(head(stream, fields.substr(0, 16000), 0));
                 for (std::size_t at = 16000; goesOn && at < fields.size(); at += 16000) {
                     const bool isLast = at + 16000 >= fields.size();
                     goesOn = frames.write(Frames::Continuation, isLast ? Frames::endOfHeaders : 0,
                                           stream, fields.substr(at, 16000));
                 }
                 return goesOn && frames.write(dataOf(stream, wellBody));
             }));
    return faults;
}

TEST_F(HTTP2FrameFaults, EndEachCallOnceAndAsTheyShould) {
    std::vector<Fault> faults = floods();
    append(faults, hugeHeads());
    run("HTTP/2 frames", faults);
}

} // namespace

} // namespace KeloAPI::testing
