#include "Feed.hpp"

namespace KeloHost {

using namespace KeloAPI;

namespace {

/// The parsed object; null where the parser fails.
template <class P>
std::shared_ptr<typename P::T> readable(const P& parser, const JsonObject& json) {
    try {
        return parser.parse(json);
    } catch (const JsonParseError&) {
        return nullptr;
    }
}

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
    return std::make_shared<KLUserMosaic>(
        pageAt<FeedUserParser>(json, "users"), textAt(json, "title"), textAt(json, "description"),
        textAt(json, "link"), textAt(json, "reference"), flagAt(json, "closeable"));
}

} // namespace

std::shared_ptr<FeedUser> FeedUserParser::parse(const JsonObject& json) const {
    auto made = std::make_shared<FeedUser>();
    made->userId = parseId(json["user"].object().value_or(json)["userId"]);
    made->user = parseUser(json);
    return made;
}

std::shared_ptr<FeedPost> FeedPostParser::parse(const JsonObject& json) const {
    const auto [channel, byline, audio, tags, entities] =
        json.values("channel", "byline", "audio", "tags", "entities");
    auto made = std::make_shared<FeedPost>();
    made->post = PostParser().parse(json);
    made->author = FeedUserParser().parse(json);
    if (const auto name = channel.text()) {
        made->channel.emplace(*name);
    }
    made->venue = readable(KLVenueParser(), json);
    if (const auto object = byline.object()) {
        made->byline = readable(KLBylineParser(), *object);
    }
    if (const auto object = audio.object()) {
        made->audio = KLPostAudioMetadata::fromJSON(*object);
    }
    if (const auto list = tags.objects()) {
        made->tags = KLTagParser().parseArray(*list, true);
    }
    if (const auto list = entities.objects()) {
        made->entities = KLEntityParser(made->post->caption.value_or("")).parseArray(*list, true);
    }
    return made;
}

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
