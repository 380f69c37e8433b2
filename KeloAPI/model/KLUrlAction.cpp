#include <KeloAPI/model/KLUrlAction.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

#include <utility>

namespace KeloAPI {

KLUrlAction::KLUrlAction(std::string reference, std::string title, std::string actionTitle,
                         URL actionUrl, std::optional<bool> closeable,
                         std::optional<URL> backgroundImage, std::optional<URL> backgroundVideo,
                         std::optional<std::string> details, std::optional<URL> actionIcon,
                         std::optional<std::string> closeUrlPath)
    : KLFeedInsert(std::move(reference), closeable.value_or(false))
    , _title(std::move(title))
    , _actionTitle(std::move(actionTitle))
    , _actionUrl(std::move(actionUrl))
    , _backgroundImage(std::move(backgroundImage))
    , _backgroundVideo(std::move(backgroundVideo))
    , _details(std::move(details))
    , _actionIcon(std::move(actionIcon))
    , _closeUrlPath(std::move(closeUrlPath)) {}

KLUrlAction::~KLUrlAction() = default;

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
