#pragma once

#include <KeloAPI/base/Object.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

namespace KeloAPI {

/// How many likes a span of a long-form video was given, at one level. Does not change once made.
class KELO_API KLEndlessLikesRange final : public Object {
public:
    /// Stores everything as given.
    KLEndlessLikesRange(double count, double start, double end, double level)
        : _count(count)
        , _startTime(start)
        , _endTime(end)
        , _level(level) {}

    /// "count".
    double count() const { return _count; }
    /// "startTime": in seconds of the video.
    double startTime() const { return _startTime; }
    /// "endTime": in seconds of the video.
    double endTime() const { return _endTime; }
    /// "level": as the service means it.
    double level() const { return _level; }

private:
    double _count;
    double _startTime;
    double _endTime;
    double _level;
};

/// Needs all four keys as numbers (`InsufficientData`).
class KELO_API KLEndlessLikesRangeParser final : public JsonParser<KLEndlessLikesRange> {
public:
    using Reading = detail::OnArrival;
    std::shared_ptr<KLEndlessLikesRange> parse(const JsonObject& json) const override;
};

} // namespace KeloAPI
