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
KLUrlActionParser::~KLUrlActionParser() = default;

std::shared_ptr<KLUrlAction> KLUrlActionParser::parse(const JsonObject& json) const {
    if (json["type"].text() != "urlAction") {
        throw JsonParseError(JsonParseError::IncorrectType, "type");
    }
    const auto values = json.values("reference", "title", "actionTitle", "actionLink", "closeable",
                                    "backgroundImage", "backgroundVideo", "description",
                                    "actionIcon", "closeUrlPath");
    auto reference = requiredText(values[0], "reference");
    auto title = requiredText(values[1], "title");
    auto actionTitle = requiredText(values[2], "actionTitle");
    auto actionUrl = urlOf(values[3]);
    if (!actionUrl) {
        throw JsonParseError(JsonParseError::InsufficientData, "actionLink");
    }
    return std::make_shared<KLUrlAction>(std::move(reference), std::move(title),
                                         std::move(actionTitle), *std::move(actionUrl),
                                         values[4].boolean(), urlOf(values[5]), urlOf(values[6]),
                                         textOf(values[7]), urlOf(values[8]), textOf(values[9]));
}

} // namespace KeloAPI
