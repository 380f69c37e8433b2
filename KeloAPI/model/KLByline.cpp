#include <KeloAPI/model/KLByline.hpp>
#include <KeloAPI/model/KLEntity.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

namespace KeloAPI {

std::shared_ptr<KLByline> KLBylineParser::parse(const JsonObject& json) const {
    const auto [body, entities, iconUrl] = json.values("body", "entities", "iconUrl");
    auto byline = std::make_shared<KLByline>(required(textOf(body), "body"));
    if (byline->text.empty()) {
        throw JsonParseError(JsonParseError::InsufficientData, "body");
    }
    if (const auto list = entities.objects()) {
        byline->entities = KLEntityParser(byline->text).parseArray(*list, /*ignoreError=*/true);
    }
    byline->iconUrl = required(urlOf(iconUrl), "iconUrl");
    return byline;
}

} // namespace KeloAPI
