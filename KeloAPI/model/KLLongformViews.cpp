#include <KeloAPI/model/KLLongformViews.hpp>

#include <utility>

namespace KeloAPI {

KLLongformViews::KLLongformViews(std::string longformId, std::int64_t count)
    : _longformId(std::move(longformId))
    , _count(count) {}

KLLongformViews::~KLLongformViews() = default;
KLLongformViewsParser::~KLLongformViewsParser() = default;

std::shared_ptr<KLLongformViews> KLLongformViewsParser::parse(const JsonObject& json) const {
    const auto [longformId, count] = json.values("longformId", "count");
    const auto id = longformId.text();
    if (!id) {
        throw JsonParseError(JsonParseError::InsufficientData, "longformId");
    }
    const auto views = count.integer();
    if (!views) {
        throw JsonParseError(JsonParseError::InsufficientData, "count");
    }
    return std::make_shared<KLLongformViews>(std::string(*id), *views);
}

} // namespace KeloAPI
