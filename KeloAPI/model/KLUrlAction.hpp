#pragma once

#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/model/KLFeedInsert.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

namespace KeloAPI {

/// A card that calls on the user to open a URL. Does not change once made.
class KELO_API KLUrlAction final : public KLFeedInsert {
public:
    /// An absent `closeable` is false.
    KLUrlAction(std::string name, std::string titleText, std::string button, URL target,
                std::optional<bool> mayClose, std::optional<URL> image, std::optional<URL> video,
                std::optional<std::string> description, std::optional<URL> icon,
                std::optional<std::string> closePath)
        : KLFeedInsert(std::move(name), mayClose.value_or(false))
        , title(std::move(titleText))
        , actionTitle(std::move(button))
        , actionUrl(std::move(target))
        , backgroundImage(std::move(image))
        , backgroundVideo(std::move(video))
        , details(std::move(description))
        , actionIcon(std::move(icon))
        , closeUrlPath(std::move(closePath)) {}

    /// "title".
    const std::string title;
    /// "actionTitle": the text of the button.
    const std::string actionTitle;
    /// "actionLink".
    const URL actionUrl;
    /// "backgroundImage"; absent when missing or not a URL.
    const std::optional<URL> backgroundImage;
    /// "backgroundVideo"; absent likewise.
    const std::optional<URL> backgroundVideo;
    /// "description".
    const std::optional<std::string> details;
    /// "actionIcon"; absent when missing or not a URL.
    const std::optional<URL> actionIcon;
    /// "closeUrlPath": the path to call when the user dismisses the card.
    const std::optional<std::string> closeUrlPath;
};

/// Reads objects of the "type" "urlAction" and no others (`IncorrectType`). Needs "reference",
/// "title" and "actionTitle" as texts and "actionLink" as a URL (`InsufficientData`).
class KELO_API KLUrlActionParser final : public JsonParser<KLUrlAction> {
public:
    using Reading = detail::OnArrival;
    std::shared_ptr<KLUrlAction> parse(const JsonObject& json) const override;
};

} // namespace KeloAPI
