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

} // namespace KeloAPI::testing
