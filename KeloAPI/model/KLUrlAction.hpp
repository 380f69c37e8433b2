#pragma once

#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/model/KLFeedInsert.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

namespace KeloAPI {

/// A card that calls on the user to open a URL. Does not change once made.
class KELO_API KLUrlAction final : public KLFeedInsert {
public:
    /// An absent `closeable` is false.
    KLUrlAction(std::string reference, std::string title, std::string actionTitle, URL actionUrl,
                std::optional<bool> closeable, std::optional<URL> backgroundImage,
                std::optional<URL> backgroundVideo, std::optional<std::string> details,
                std::optional<URL> actionIcon, std::optional<std::string> closeUrlPath)
        : KLFeedInsert(std::move(reference), closeable.value_or(false))
        , _title(std::move(title))
        , _actionTitle(std::move(actionTitle))
        , _actionUrl(std::move(actionUrl))
        , _backgroundImage(std::move(backgroundImage))
        , _backgroundVideo(std::move(backgroundVideo))
        , _details(std::move(details))
        , _actionIcon(std::move(actionIcon))
        , _closeUrlPath(std::move(closeUrlPath)) {}

    /// "title".
    const std::string& title() const { return _title; }
    /// "actionTitle": the text of the button.
    const std::string& actionTitle() const { return _actionTitle; }
    /// "actionLink".
    const URL& actionUrl() const { return _actionUrl; }
    /// "backgroundImage"; absent when missing or not a URL.
    const std::optional<URL>& backgroundImage() const { return _backgroundImage; }
    /// "backgroundVideo"; absent likewise.
    const std::optional<URL>& backgroundVideo() const { return _backgroundVideo; }
    /// "description".
    const std::optional<std::string>& details() const { return _details; }
    /// "actionIcon"; absent when missing or not a URL.
    const std::optional<URL>& actionIcon() const { return _actionIcon; }
    /// "closeUrlPath": the path to call when the user dismisses the card.
    const std::optional<std::string>& closeUrlPath() const { return _closeUrlPath; }

private:
    std::string _title;
    std::string _actionTitle;
    URL _actionUrl;
    std::optional<URL> _backgroundImage;
    std::optional<URL> _backgroundVideo;
    std::optional<std::string> _details;
    std::optional<URL> _actionIcon;
    std::optional<std::string> _closeUrlPath;
};

/// Reads objects of the "type" "urlAction" and no others (`IncorrectType`). Needs "reference",
/// "title" and "actionTitle" as texts and "actionLink" as a URL (`InsufficientData`).
class KELO_API KLUrlActionParser final : public JsonParser<KLUrlAction> {
public:
    using Reading = detail::OnArrival;
    std::shared_ptr<KLUrlAction> parse(const JsonObject& json) const override;
};

} // namespace KeloAPI
