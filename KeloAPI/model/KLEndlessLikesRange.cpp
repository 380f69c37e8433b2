#include <KeloAPI/model/KLEndlessLikesRange.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

namespace KeloAPI {

std::shared_ptr<KLEndlessLikesRange>
KLEndlessLikesRangeParser::parse(const JsonObject& json) const {
    const auto [count, startTime, endTime, level] =
        json.values("count", "startTime", "endTime", "level");
    const double loops = required(count.real(), "count");
    const double start = required(startTime.real(), "startTime");
    const double end = required(endTime.real(), "endTime");
    return std::make_shared<KLEndlessLikesRange>(loops, start, end,
                                                 required(level.real(), "level"));
}

} // namespace KeloAPI
