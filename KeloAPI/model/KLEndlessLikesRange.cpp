#include <KeloAPI/model/KLEndlessLikesRange.hpp>

namespace KeloAPI {

namespace {

double required(const JsonValue& value, const char* key) {
    const auto number = value.real();
    if (!number) {
        throw JsonParseError(JsonParseError::InsufficientData, key);
    }
    return *number;
}

} // namespace

KLEndlessLikesRange::KLEndlessLikesRange(double count, double start, double end, double level)
    : _count(count)
    , _startTime(start)
    , _endTime(end)
    , _level(level) {}

KLEndlessLikesRange::~KLEndlessLikesRange() = default;
KLEndlessLikesRangeParser::~KLEndlessLikesRangeParser() = default;

std::shared_ptr<KLEndlessLikesRange>
KLEndlessLikesRangeParser::parse(const JsonObject& json) const {
    const auto values = json.values("count", "startTime", "endTime", "level");
    const double count = required(values[0], "count");
    const double start = required(values[1], "startTime");
    const double end = required(values[2], "endTime");
    const double level = required(values[3], "level");
    return std::make_shared<KLEndlessLikesRange>(count, start, end, level);
}

} // namespace KeloAPI
