#include <KeloAPI/model/KLLongformViews.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

namespace KeloAPI {

std::shared_ptr<KLLongformViews> KLLongformViewsParser::parse(const JsonObject& json) const {
    const auto [longformId, count] = json.values("longformId", "count");
    auto id = required(textOf(longformId), "longformId");
    return std::make_shared<KLLongformViews>(std::move(id), required(count.integer(), "count"));
}

} // namespace KeloAPI
