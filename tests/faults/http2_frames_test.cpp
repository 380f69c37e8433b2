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
            over("50 interim responses, then the response", "", ok, flooding(interim, 100, true)),
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

std::vector<Fault> brokenFrames() {
    std::vector<Fault> faults;
    const auto add = [&](const char* variant, MakeFrames make) {
        faults.push_back(over("frames that may not be", variant, lost, sending(std::move(make))));
    };
    const auto frame = &Frames::frame;
    add("DATA on no stream", [=](auto) { return frame(Frames::Data, 0, 0, "x"); });
    add("DATA on a stream that nobody opened",
        [=](auto) { return frame(Frames::Data, 0, 99, "x"); });
    add("HEADERS on a stream of the server's",
        [=](auto) { return frame(Frames::Headers, Frames::endOfHeaders, 2, Frames::status200); });
    add("a push that was ruled out", [=](std::uint32_t stream) {
        return frame(Frames::PushPromise, Frames::endOfHeaders, stream,
                     Frames::number(2) + "\x82\x84\x87");
    });
    add("a window opened by nothing",
        [=](auto) { return frame(Frames::WindowUpdate, 0, 0, Frames::number(0)); });
    add("a window opened too far",
        [=](auto) { return frame(Frames::WindowUpdate, 0, 0, Frames::number(0x7FFFFFFF)); });
    add("a frame that is too long", [=](std::uint32_t stream) {
        return frame(Frames::Data, 0, stream, std::string(20'000, 'x'));
    });
    add("a head that cannot be unpacked",
        [](std::uint32_t stream) { return head(stream, "\xFF\xFF\xFF\xFF\xFF\x0F"); });
    add("the rest of no head", [=](std::uint32_t stream) {
        return frame(Frames::Continuation, Frames::endOfHeaders, stream, Frames::status200);
    });
    add("another frame within a head", [=](std::uint32_t stream) {
        return head(stream, Frames::status200, 0) + frame(Frames::Ping, 0, 0, std::string(8, 'x'));
    });
    add("SETTINGS of odd length", [=](auto) { return frame(Frames::Settings, 0, 0, "odd"); });
    add("SETTINGS on a stream",
        [=](std::uint32_t stream) { return frame(Frames::Settings, 0, stream, ""); });
    add("PING of odd length", [=](auto) { return frame(Frames::Ping, 0, 0, "odd"); });
    add("HTTP/1.1", [](auto) { return answerOf(wellBody); });
    // libcurl tells the server, and waits for it.
    faults.push_back(over("padding longer than its frame", "", HTTPErrorCode::TimedOut,
                          sending([=](std::uint32_t stream) {
                              return head(stream) +
                                     frame(Frames::Data, Frames::padded, stream, "\xFFxx");
                          })));
    return faults;
}

std::vector<Fault> brokenResponses() {
    std::vector<Fault> faults;
    const auto add = [&](const char* variant, MakeFrames make) {
        faults.push_back(
            over("a response that may not be", variant, lost, sending(std::move(make))));
    };
    const auto wellDataOn = [](std::uint32_t stream) { return dataOf(stream, wellBody); };
    add("a body before its head", wellDataOn);
    add("no status", [=](std::uint32_t stream) {
        return head(stream, Frames::field("x", "y")) + wellDataOn(stream);
    });
    add("a status that is no number", [=](std::uint32_t stream) {
        return head(stream, Frames::field(":status", "abc")) + wellDataOn(stream);
    });
    add("two statuses", [=](std::uint32_t stream) {
        return head(stream, std::string(Frames::status200) + Frames::status200) +
               wellDataOn(stream);
    });
    add("a field in capitals", [=](std::uint32_t stream) {
        return head(stream, Frames::status200 + Frames::field("X-Some", "y")) + wellDataOn(stream);
    });
    add("a field of HTTP/1.1", [=](std::uint32_t stream) {
        return head(stream, Frames::status200 + Frames::field("transfer-encoding", "chunked")) +
               wellDataOn(stream);
    });
    for (const char* length : {"5", "1000", "-1", "many"}) {
        add((std::string("a length of ") + length).c_str(), [=](std::uint32_t stream) {
            return head(stream, Frames::status200 + Frames::field("content-length", length)) +
                   wellDataOn(stream);
        });
    }
    add("an interim response, and the end", [](std::uint32_t stream) {
        return head(stream, std::string("\x08\x03", 2) + "103",
                    Frames::endOfHeaders | Frames::endOfStream);
    });
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

std::vector<Fault> odd() {
    const auto fault = [](const char* variant, MakeFrames make) {
        return over("odd frames that are allowed", variant, ok, sending(std::move(make)));
    };
    return {fault("a frame of no known type",
                  [](std::uint32_t stream) {
                      return Frames::frame(0x77, 0xFF, 0, "whatever") +
                             Frames::response(stream, wellBody);
                  }),
            fault("empty DATA",
                  [](std::uint32_t stream) {
                      return head(stream) + dataOf(stream, "", false) +
                             dataOf(stream, wellBody, false) + dataOf(stream, "");
                  }),
            fault("padding",
                  [](std::uint32_t stream) {
                      return head(stream) +
                             Frames::frame(Frames::Data, Frames::padded | Frames::endOfStream,
                                           stream, "\x03" + wellBody + std::string(3, '\0'));
                  }),
            fault("trailers", [](std::uint32_t stream) {
                return head(stream) + dataOf(stream, wellBody, false) +
                       head(stream, Frames::field("x-trailer", "t"),
                            Frames::endOfHeaders | Frames::endOfStream);
            })};
}

TEST_F(HTTP2FrameFaults, EndEachCallOnceAndAsTheyShould) {
    std::vector<Fault> faults = floods();
    append(faults, brokenFrames());
    append(faults, brokenResponses());
    append(faults, odd());
    run("HTTP/2 frames", faults);
}

} // namespace

} // namespace KeloAPI::testing
