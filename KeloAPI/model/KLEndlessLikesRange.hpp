#pragma once

#include <KeloAPI/base/Object.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

namespace KeloAPI {

/// How many likes a span of a long-form video was given, at one level. Does not change once made.
class KELO_API KLEndlessLikesRange final : public Object {
public:
    /// Stores everything as given.
    KLEndlessLikesRange(double likes, double start, double end, double atLevel)
        : count(likes)
        , startTime(start)
        , endTime(end)
        , level(atLevel) {}

    /// "count".
    const double count;
    /// "startTime": in seconds of the video.
    const double startTime;
    /// "endTime": in seconds of the video.
    const double endTime;
    /// "level": as the service means it.
    const double level;
};

/// Needs all four keys as numbers (`InsufficientData`).
class KELO_API KLEndlessLikesRangeParser final : public JsonParser<KLEndlessLikesRange> {
public:
    using Reading = detail::OnArrival;
    std::shared_ptr<KLEndlessLikesRange> parse(const JsonObject& json) const override;
};

} // namespace KeloAPI
