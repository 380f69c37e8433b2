#include <KeloAPI/model/KLLongformViews.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

#include <utility>

namespace KeloAPI {

KLLongformViews::KLLongformViews(std::string longformId, std::int64_t count)
    : _longformId(std::move(longformId))
    , _count(count) {}

KLLongformViews::~KLLongformViews() = default;

std::shared_ptr<KLLongformViews> KLLongformViewsParser::parse(const JsonObject& json) const {
    const auto [longformId, count] = json.values("longformId", "count");
    const auto id = required(longformId.text(), "longformId");
    const auto views = required(count.integer(), "count");
    return std::make_shared<KLLongformViews>(std::string(id), views);
}

} // namespace KeloAPI
