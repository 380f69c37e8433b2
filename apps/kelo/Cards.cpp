#include "Cards.hpp"

#include "FeedPost.hpp"
#include "TextWidth.hpp"

#include <KeloAPI/KeloAPI.hpp>

namespace KeloHost {

using namespace KeloAPI;

namespace {

std::string textAt(const JsonObject& json, const char* key) {
    return std::string(json[key].text().value_or(""));
}

bool flagAt(const JsonObject& json, const char* key) {
    return json[key].boolean().value_or(false);
}

/// The page under a key; an empty one where there is none.
template <class P>
std::shared_ptr<KLPagedData> pageAt(const JsonObject& json, const char* key) {
    const auto page = json[key].object();
    return page ? KLPagedDataParser<P>(std::make_shared<P>()).parse(*page)
                : std::make_shared<KLPagedData>();
}

KLPostsMosaicType layoutOf(std::string_view name) {
    return name == "avatarIncluded"    ? KLPostsMosaicType::AvatarIncluded
           : name == "default"         ? KLPostsMosaicType::Default
           : name == "smallThumbnails" ? KLPostsMosaicType::SmallThumbnails
                                       : KLPostsMosaicType::Unknown;
}

std::shared_ptr<KLFeedInsert> postsMosaic(const JsonObject& json) {
    return std::make_shared<KLPostsMosaic>(
        pageAt<FeedPostParser>(json, "posts"), textAt(json, "title"), textAt(json, "description"),
        textAt(json, "link"), textAt(json, "reference"), flagAt(json, "closeable"),
        layoutOf(textAt(json, "mosaicType")), flagAt(json, "pinnable"));
}

std::shared_ptr<KLFeedInsert> userMosaic(const JsonObject& json) {
    return std::make_shared<KLUserMosaic>(pageAt<UserParser>(json, "users"), textAt(json, "title"),
                                          textAt(json, "description"), textAt(json, "link"),
                                          textAt(json, "reference"), flagAt(json, "closeable"));
}

struct Description {
    std::string kind;
    std::string text;
};

std::string namesIn(const KLPagedData& users) {
    std::string names;
    for (const auto& user : elementsOf<KLWatchUser>(users)) {
        names += (names.empty() ? "" : ", ") + user->username.value_or("?");
    }
    return names;
}

Description described(const KLFeedInsert& insert) {
    if (const auto* action = dynamic_cast<const KLUrlAction*>(&insert)) {
        return {"action", action->title() + " – " + action->actionTitle() + ": " +
                              action->actionUrl().absoluteString()};
    }
    if (const auto* mosaic = dynamic_cast<const KLPostsMosaic*>(&insert)) {
        return {"posts", mosaic->title() + " – " + mosaic->subtitle() + ": " +
                             std::to_string(mosaic->posts()->count()) + " posts"};
    }
    if (const auto* mosaic = dynamic_cast<const KLUserMosaic*>(&insert)) {
        return {"people",
                mosaic->title() + " – " + mosaic->subtitle() + ": " + namesIn(*mosaic->users())};
    }
    return {dynamic_cast<const KLSolicitation*>(&insert) != nullptr ? "prompt" : "unknown", ""};
}

} // namespace

std::shared_ptr<KLFeedInsert> FeedCardParser::parse(const JsonObject& json) const {
    const std::string type = textAt(json, "type");
    if (type == "urlAction") {
        return KLUrlActionParser().parse(json);
    }
    if (type == "solicitation") {
        return KLSolicitationParser().parse(json);
    }
    if (type == "postsMosaic") {
        return postsMosaic(json);
    }
    if (type == "userMosaic") {
        return userMosaic(json);
    }
    return std::make_shared<KLFeedInsert>(textAt(json, "reference"), flagAt(json, "closeable"));
}

Parameters fieldsOf(const KLFeedInsert& card) {
    Parameters fields = {
        {"reference", card.reference()}, {"closeable", card.closeable()}, {"kind", nullptr}};
    Parameters more;
    if (const auto* action = dynamic_cast<const KLUrlAction*>(&card)) {
        more = {{"kind", "urlAction"},
                {"title", action->title()},
                {"actionTitle", action->actionTitle()},
                {"actionUrl", valueOf(action->actionUrl())},
                {"backgroundImage", valueOf(action->backgroundImage())},
                {"backgroundVideo", valueOf(action->backgroundVideo())},
                {"details", valueOf(action->details())},
                {"actionIcon", valueOf(action->actionIcon())},
                {"closeUrlPath", valueOf(action->closeUrlPath())}};
    } else if (const auto* prompt = dynamic_cast<const KLSolicitation*>(&card)) {
        more = {{"kind", "solicitation"}, {"closeUrlPath", valueOf(prompt->closeUrlPath())}};
    } else if (const auto* mosaic = dynamic_cast<const KLPostsMosaic*>(&card)) {
        more = {{"kind", "postsMosaic"},
                {"title", mosaic->title()},
                {"subtitle", mosaic->subtitle()},
                {"link", mosaic->link()},
                {"type", static_cast<int>(mosaic->type())},
                {"pinnable", mosaic->pinnable()},
                {"posts", valueOf(elementsOf<FeedPost>(*mosaic->posts()))}};
    } else if (const auto* people = dynamic_cast<const KLUserMosaic*>(&card)) {
        more = {{"kind", "userMosaic"},
                {"title", people->title()},
                {"subtitle", people->subtitle()},
                {"link", people->link()},
                {"users", valueOf(elementsOf<KLWatchUser>(*people->users()))}};
    }
    more.merge(fields);
    return more;
}

Lines linesOfCards(const std::vector<std::shared_ptr<KLFeedInsert>>& cards) {
    Lines lines;
    for (const auto& card : cards) {
        const auto [kind, text] = described(*card);
        std::string line = padded(card->reference(), 18) + " " + padded(kind, 8) + " " +
                           (card->closeable() ? "×" : " ") + " " + text;
        line.erase(line.find_last_not_of(' ') + 1);
        lines.push_back(line);
    }
    return lines.empty() ? Lines{"This feed has no cards."} : lines;
}

} // namespace KeloHost
