#include "FeedCard.hpp"

#include "FeedPost.hpp"

#include <KeloAPI/model/KLPagedDataParser.hpp>
#include <KeloAPI/model/KLPostsMosaic.hpp>
#include <KeloAPI/model/KLSolicitation.hpp>
#include <KeloAPI/model/KLUrlAction.hpp>
#include <KeloAPI/model/KLUserMosaic.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>

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

} // namespace KeloHost
