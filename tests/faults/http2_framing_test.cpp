#include "HTTP2Fault.hpp"
#include "Matrix.hpp"

namespace KeloAPI::testing {

namespace {

using HTTP2FramingFaults = FaultMatrix;

class FrameRule : public RuledFaults {
public:
    using RuledFaults::RuledFaults;

    /// These frames, then the response.
    void before(const std::string& name, const MakeFrames& make) {
        add(name, [make](std::uint32_t stream) {
            return make(stream) + Frames::response(stream, wellBody);
        });
    }
    /// The response, then these frames.
    void behind(const std::string& name, const MakeFrames& make) {
        add(name, [make](std::uint32_t stream) {
            return Frames::response(stream, wellBody) + make(stream);
        });
    }
    /// This frame in the place of a response.
    void frame(const std::string& name, std::uint8_t type, std::uint8_t flags,
               const std::string& payload) {
        add(name,
            [=](std::uint32_t stream) { return Frames::frame(type, flags, stream, payload); });
    }
    /// The same on another stream than the request's.
    void frameOn(std::uint32_t stream, const std::string& name, std::uint8_t type,
                 std::uint8_t flags, const std::string& payload) {
        add(name, [=](auto) { return Frames::frame(type, flags, stream, payload); });
    }
};

const std::string eightBytes(8, 'x');
const std::string fiveBytes(5, '\0');

/// A value of SETTINGS.
std::string setting(char which, std::uint32_t value) {
    return std::string(1, '\0') + which + Frames::number(value);
}

std::string goAwayBytes(std::uint32_t last) {
    return Frames::number(last) + Frames::number(0);
}

std::vector<Fault> wrongStreams() {
    FrameRule rule("A frame has to be on a stream that may have it.", lost);
    const std::uint8_t whole = Frames::endOfHeaders;
    rule.frameOn(0, "DATA on no stream", Frames::Data, 0, "x");
    rule.frameOn(0, "HEADERS on no stream", Frames::Headers, whole, Frames::status200);
    rule.frameOn(0, "PRIORITY on no stream", Frames::Priority, 0, fiveBytes);
    rule.frameOn(0, "RST_STREAM on no stream", Frames::ResetStream, 0, Frames::number(0));
    rule.frameOn(0, "CONTINUATION on no stream", Frames::Continuation, whole, Frames::status200);
    rule.frame("SETTINGS on a stream", Frames::Settings, 0, "");
    rule.frame("PING on a stream", Frames::Ping, 0, eightBytes);
    rule.frame("GOAWAY on a stream", Frames::GoAway, 0, goAwayBytes(0));
    rule.frameOn(99, "DATA on a stream that nobody opened", Frames::Data, 0, "x");
    rule.frameOn(99, "HEADERS on a stream that nobody opened", Frames::Headers, whole,
                 Frames::status200);
    rule.frameOn(99, "RST_STREAM on a stream that nobody opened", Frames::ResetStream, 0,
                 Frames::number(0));
    rule.frameOn(99, "WINDOW_UPDATE on a stream that nobody opened", Frames::WindowUpdate, 0,
                 Frames::number(1));
    rule.frameOn(2, "HEADERS on a stream of the server's", Frames::Headers, whole,
                 Frames::status200);
    rule.frameOn(2, "DATA on a stream of the server's", Frames::Data, 0, "x");
    return rule.all;
}

std::vector<Fault> pushes() {
    FrameRule rule("Pushes are ruled out.", lost);
    const std::string promise = Frames::number(2) + "\x82\x84\x87";
    rule.frame("PUSH_PROMISE", Frames::PushPromise, Frames::endOfHeaders, promise);
    rule.frame("PUSH_PROMISE, too short for a stream", Frames::PushPromise, Frames::endOfHeaders,
               "x");
    rule.frameOn(0, "PUSH_PROMISE on no stream", Frames::PushPromise, Frames::endOfHeaders,
                 promise);
    return rule.all;
}

std::vector<Fault> wrongLengths() {
    FrameRule rule("A frame has the length of its type.", lost);
    rule.frameOn(0, "SETTINGS of 5 bytes", Frames::Settings, 0, fiveBytes);
    rule.frameOn(0, "SETTINGS that acknowledge with a value", Frames::Settings,
                 Frames::acknowledged, setting('\3', 100));
    rule.frameOn(0, "PING of 7 bytes", Frames::Ping, 0, std::string(7, 'x'));
    rule.frameOn(0, "PING of 9 bytes", Frames::Ping, 0, std::string(9, 'x'));
    rule.frameOn(0, "GOAWAY of 7 bytes", Frames::GoAway, 0, std::string(7, '\0'));
    rule.frameOn(0, "WINDOW_UPDATE of 3 bytes", Frames::WindowUpdate, 0, std::string("\0\0\1", 3));
    rule.frameOn(0, "WINDOW_UPDATE of 5 bytes", Frames::WindowUpdate, 0, std::string(5, '\1'));
    rule.frame("RST_STREAM of 3 bytes", Frames::ResetStream, 0, std::string(3, '\0'));
    rule.frame("RST_STREAM of 5 bytes", Frames::ResetStream, 0, fiveBytes);
    rule.frame("PRIORITY of 4 bytes", Frames::Priority, 0, std::string(4, '\0'));
    rule.frame("PRIORITY of 6 bytes", Frames::Priority, 0, std::string(6, '\0'));
    rule.frame("HEADERS too short for their priority", Frames::Headers,
               Frames::endOfHeaders | Frames::hasPriority, "x");
    rule.frame("DATA of 20,000 bytes", Frames::Data, 0, std::string(20'000, 'x'));
    rule.frame("HEADERS of 20,000 bytes", Frames::Headers, Frames::endOfHeaders,
               std::string(20'000, '\x88'));
    rule.add("HTTP/1.1", [](auto) { return answerOf(wellBody); });
    return rule.all;
}

std::vector<Fault> paddings() {
    FrameRule rule("Padding lies within its frame.", lost);
    const std::uint8_t whole = Frames::endOfHeaders | Frames::padded;
    rule.frame("HEADERS of padding's length alone, which is not there", Frames::Headers, whole, "");
    rule.frame("HEADERS with more padding than frame", Frames::Headers, whole,
               std::string("\xFF") + Frames::status200);
    return rule.all;
}

std::vector<Fault> behindHeads() {
    FrameRule rule(
        "Behind a head, libcurl tells the server that a rule is broken and waits for it to "
        "close: one that does not is silent.",
        HTTPErrorCode::TimedOut);
    const auto behindHead = [&](const std::string& name, const MakeFrames& make) {
        rule.add(name, [make](std::uint32_t stream) { return head(stream) + make(stream); });
    };
    const auto data = [&](const std::string& name, const std::string& payload) {
        behindHead(name, [payload](std::uint32_t stream) {
            return Frames::frame(Frames::Data, Frames::padded, stream, payload);
        });
    };
    data("DATA of padding's length alone, which is not there", "");
    data("DATA with more padding than frame", "\xFFxx");
    data("DATA with as much padding as frame", "\x03xx");
    behindHead("DATA on no stream", [](auto) { return dataOf(0, wellBody); });
    behindHead("PING of 7 bytes",
               [](auto) { return Frames::frame(Frames::Ping, 0, 0, std::string(7, 'x')); });
    behindHead("CONTINUATION", [](std::uint32_t stream) {
        return Frames::frame(Frames::Continuation, Frames::endOfHeaders, stream, "");
    });
    return rule.all;
}

std::vector<Fault> windowsAndValues() {
    FrameRule rule(
        "A window opens by something and not too far, and SETTINGS have values that may be.", lost);
    rule.frameOn(0, "the connection's window opened by nothing", Frames::WindowUpdate, 0,
                 Frames::number(0));
    rule.frame("a stream's window opened by nothing", Frames::WindowUpdate, 0, Frames::number(0));
    rule.frameOn(0, "the connection's window opened too far", Frames::WindowUpdate, 0,
                 Frames::number(0x7FFFFFFF));
    rule.frame("a stream's window opened too far", Frames::WindowUpdate, 0,
               Frames::number(0x7FFFFFFF));
    rule.frameOn(0, "a first window of 2^31 bytes", Frames::Settings, 0, setting('\4', 0x80000000));
    rule.frameOn(0, "frames of 16,383 bytes at most", Frames::Settings, 0, setting('\5', 16'383));
    rule.frameOn(0, "frames of 2^24 bytes at most", Frames::Settings, 0, setting('\5', 1U << 24U));
    rule.frameOn(0, "pushes allowed by the server", Frames::Settings, 0, setting('\2', 1));
    rule.frameOn(0, "pushes allowed by 2", Frames::Settings, 0, setting('\2', 2));
    rule.add("SETTINGS acknowledged that were not sent", [](auto) {
        const std::string all = Frames::frame(Frames::Settings, Frames::acknowledged, 0, "");
        return all + all; // the first may be for those that were
    });
    rule.add("GOAWAY, and another with a later stream",
             [](std::uint32_t stream) { return goAwayOf(stream, 0) + goAwayOf(stream + 2, 0); });
    return rule.all;
}

std::vector<Fault> continuations() {
    FrameRule rule("A head goes on in CONTINUATION at once, on its stream and nowhere else.", lost);
    rule.frame("CONTINUATION of no head", Frames::Continuation, Frames::endOfHeaders,
               Frames::status200);
    const auto within = [&](const std::string& name, const MakeFrames& make) {
        rule.add(name, [make](std::uint32_t stream) {
            return head(stream, Frames::status200, 0) + make(stream);
        });
    };
    within("PING within a head",
           [](auto) { return Frames::frame(Frames::Ping, 0, 0, eightBytes); });
    within("DATA within a head", [](std::uint32_t stream) { return dataOf(stream, wellBody); });
    within("HEADERS within a head", [](std::uint32_t stream) { return head(stream); });
    within("HEADERS of another stream within a head", [](auto) { return head(99); });
    within("a frame of no known type within a head",
           [](std::uint32_t stream) { return Frames::frame(0x77, 0, stream, "x"); });
    within("CONTINUATION on another stream", [](std::uint32_t stream) {
        return Frames::frame(Frames::Continuation, Frames::endOfHeaders, stream + 2, "");
    });
    return rule.all;
}

std::vector<Fault> packedHeads() {
    FrameRule rule("A head can be unpacked.", lost);
    const std::string status = Frames::status200;
    rule.addHead("field 0", status + "\x80");
    rule.addHead("a field beyond both tables", status + "\xBE");
    rule.addHead("a field far beyond both tables", status + "\xFF\xFF\xFF\xFF\xFF\x0F");
    rule.addHead("a name beyond both tables", status + "\x7E\x01x");
    rule.addHead("a number without end", status + "\x7F" + std::string(12, '\x80'));
    rule.addHead("a name that is cut", status + std::string("\0\5ab", 4));
    rule.addHead("a value that is cut", status + std::string("\0\1a\5b", 5));
    rule.addHead("a name without its value", status + std::string("\0\1a", 3));
    rule.addHead("a Huffman code that ends the text",
                 status + std::string("\0\1x\x84\xFF\xFF\xFF\xFF", 8));
    rule.addHead("a Huffman text padded by 11 bits", status + std::string("\0\1x\x82\x1F\xFF", 6));
    rule.addHead("a Huffman text padded by zeros", status + std::string("\0\1x\x81\x18", 5));
    rule.addHead("a table larger than was agreed", "\x3F\xE1\xFF\x03" + status);
    rule.addHead("a table resized behind a field", status + "\x20");
    return rule.all;
}

std::vector<Fault> allowedFrames() {
    FrameRule rule("What is not known or not needed is overlooked.", ok);
    const auto frame = &Frames::frame;
    rule.before("a frame of no known type", [=](auto) { return frame(0x77, 0xFF, 0, "whatever"); });
    rule.before("a frame of no known type on the stream",
                [=](std::uint32_t stream) { return frame(0x77, 0xFF, stream, "whatever"); });
    rule.before("a frame of no known type on a stream that nobody opened",
                [=](auto) { return frame(0x77, 0xFF, 99, "whatever"); });
    rule.before("SETTINGS of no known value",
                [=](auto) { return frame(Frames::Settings, 0, 0, setting('\x77', 7)); });
    rule.before("SETTINGS without pushes",
                [=](auto) { return frame(Frames::Settings, 0, 0, setting('\2', 0)); });
    rule.before("SETTINGS without a table of fields",
                [=](auto) { return frame(Frames::Settings, 0, 0, setting('\1', 0)); });
    rule.before("SETTINGS with the longest frames",
                [=](auto) { return frame(Frames::Settings, 0, 0, setting('\5', 0xFFFFFF)); });
    rule.add("SETTINGS that allow no further stream, and later do", [=](std::uint32_t stream) {
        return frame(Frames::Settings, 0, 0, setting('\3', 0)) +
               Frames::response(stream, wellBody) +
               frame(Frames::Settings, 0, 0, setting('\3', 100));
    });
    rule.before("an answer to no PING",
                [=](auto) { return frame(Frames::Ping, Frames::acknowledged, 0, eightBytes); });
    rule.before("unknown flags of PING",
                [=](auto) { return frame(Frames::Ping, 0xF0, 0, eightBytes); });
    rule.before("PRIORITY", [=](std::uint32_t stream) {
        return frame(Frames::Priority, 0, stream, fiveBytes);
    });
    rule.before("PRIORITY of a stream that nobody opened",
                [=](auto) { return frame(Frames::Priority, 0, 99, fiveBytes); });
    rule.before("an alternative place that the server names",
                [=](auto) { return frame(0xA, 0, 0, std::string("\0\0h2=\":1\"", 9)); });
    rule.before("GOAWAY with words", [=](std::uint32_t stream) {
        return frame(Frames::GoAway, 0, 0, goAwayBytes(stream) + "so long");
    });
    rule.before("a bit that is reserved", [=](auto) {
        return frame(Frames::WindowUpdate, 0, 0, Frames::number(0x80000001));
    });
    rule.add("HEADERS with a priority", [=](std::uint32_t stream) {
        return frame(Frames::Headers, Frames::endOfHeaders | Frames::hasPriority, stream,
                     fiveBytes + Frames::status200) +
               dataOf(stream, wellBody);
    });
    rule.add("empty DATA", [](std::uint32_t stream) {
        return head(stream) + dataOf(stream, "", false) + dataOf(stream, wellBody, false) +
               dataOf(stream, "");
    });
    rule.add("padding", [=](std::uint32_t stream) {
        return head(stream) + frame(Frames::Data, Frames::padded | Frames::endOfStream, stream,
                                    "\x03" + wellBody + std::string(3, '\0'));
    });
    rule.add("a head in three frames", [=](std::uint32_t stream) {
        return head(stream, Frames::status200, 0) +
               frame(Frames::Continuation, 0, stream, Frames::field("x-some", "x")) +
               frame(Frames::Continuation, Frames::endOfHeaders, stream, "") +
               dataOf(stream, wellBody);
    });
    rule.addHead("a Huffman text", Frames::status200 + std::string("\0\1x\x81\x1F", 5));
    rule.addHead("a table of no fields", std::string("\x20") + Frames::status200);
    rule.addHead("a field that is remembered",
                 Frames::status200 + std::string("\x40\1x\1y\xBE", 6));
    return rule.all;
}

std::vector<Fault> closedStreams() {
    FrameRule rule("A stream whose response is whole harms no call any more.", ok);
    rule.behind("WINDOW_UPDATE", [](std::uint32_t stream) {
        return Frames::frame(Frames::WindowUpdate, 0, stream, Frames::number(1));
    });
    rule.behind("PRIORITY", [](std::uint32_t stream) {
        return Frames::frame(Frames::Priority, 0, stream, fiveBytes);
    });
    rule.behind("RST_STREAM", [](std::uint32_t stream) { return resetOf(stream, 2); });
    rule.behind("DATA", [](std::uint32_t stream) { return dataOf(stream, "more"); });
    rule.behind("HEADERS", [](std::uint32_t stream) { return head(stream); });
    return rule.all;
}

TEST_F(HTTP2FramingFaults, EndEachCallOnceAndAsTheyShould) {
    std::vector<Fault> faults = wrongStreams();
    append(faults, pushes());
    append(faults, wrongLengths());
    append(faults, paddings());
    append(faults, behindHeads());
    append(faults, windowsAndValues());
    append(faults, continuations());
    append(faults, packedHeads());
    append(faults, allowedFrames());
    append(faults, closedStreams());
    run("HTTP/2 framing", faults, &casesOf);
}

} // namespace

} // namespace KeloAPI::testing
