#pragma once

#include "Fault.hpp"

#include <functional>
#include <string>
#include <vector>

namespace KeloAPI::testing {

using Frames = FrameConnection;

/// All that is not GET: it is never sent again over HTTP/2.
inline const std::vector<CallKind> sentOnce = {CallKind::Act, CallKind::Undo, CallKind::Upload,
                                               CallKind::Loops};
inline const Rule lost = HTTPErrorCode::ConnectionLost;

/// The frames of a response, made for the stream of a request.
using MakeFrames = std::function<std::string(std::uint32_t stream)>;

/// The connection goes on: it may be of use for other streams.
inline FrameStrike sending(MakeFrames make, Leave how = Leave::Stay) {
    return [make = std::move(make), how](FrameConnection& frames, std::uint32_t stream) {
        return frames.write(make(stream)) && leave(frames.connection(), how);
    };
}

inline Fault over(const std::string& row, const std::string& variant, const Rule& rule,
                  FrameStrike strike) {
    return {.row = row,
            .variant = variant,
            .rule = rule,
            .frames = std::move(strike),
            .speaks = Speaks::HTTP2};
}

inline Fault once(Fault fault) {
    fault.isOnce = true;
    return fault;
}

inline std::string head(std::uint32_t stream, const std::string& fields = Frames::status200,
                        std::uint8_t flags = Frames::endOfHeaders) {
    return Frames::frame(Frames::Headers, flags, stream, fields);
}

inline std::string dataOf(std::uint32_t stream, const std::string& bytes, bool ends = true) {
    return Frames::frame(Frames::Data, ends ? Frames::endOfStream : 0, stream, bytes);
}

inline std::string resetOf(std::uint32_t stream, std::uint32_t code) {
    return Frames::frame(Frames::ResetStream, 0, stream, Frames::number(code));
}

inline std::string goAwayOf(std::uint32_t last, std::uint32_t code) {
    return Frames::frame(Frames::GoAway, 0, 0, Frames::number(last) + Frames::number(code));
}

/// Faults under one rule, which all end alike.
class RuledFaults {
public:
    RuledFaults(std::string sentence, Rule rule)
        : _sentence(std::move(sentence))
        , _rule(std::move(rule)) {}

    /// These frames in the place of a response.
    void add(const std::string& name, MakeFrames make) {
        all.push_back(over(_sentence, name, _rule, sending(std::move(make))));
    }
    /// A response whose head has exactly these fields.
    void addHead(const std::string& name, const std::string& fields) {
        add(name, [fields](std::uint32_t stream) {
            return head(stream, fields) + dataOf(stream, wellBody);
        });
    }

    std::vector<Fault> all;

private:
    std::string _sentence;
    Rule _rule;
};

} // namespace KeloAPI::testing
