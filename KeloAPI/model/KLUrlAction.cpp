#include <KeloAPI/model/KLUrlAction.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

namespace KeloAPI {

std::shared_ptr<KLUrlAction> KLUrlActionParser::parse(const JsonObject& json) const {
    if (json["type"].text() != "urlAction") {
        throw JsonParseError(JsonParseError::IncorrectType, "type");
    }
    const auto [referenceText, titleText, actionTitleText, actionLink, closeable, backgroundImage,
                backgroundVideo, description, actionIcon, closeUrlPath] =
        json.values("reference", "title", "actionTitle", "actionLink", "closeable",
                    "backgroundImage", "backgroundVideo", "description", "actionIcon",
                    "closeUrlPath");
    auto reference = required(textOf(referenceText), "reference");
    auto title = required(textOf(titleText), "title");
    auto actionTitle = required(textOf(actionTitleText), "actionTitle");
    auto actionUrl = required(urlOf(actionLink), "actionLink");
    return std::make_shared<KLUrlAction>(
        std::move(reference), std::move(title), std::move(actionTitle), std::move(actionUrl),
        closeable.boolean(), urlOf(backgroundImage), urlOf(backgroundVideo), textOf(description),
        urlOf(actionIcon), textOf(closeUrlPath));
}

} // namespace KeloAPI
