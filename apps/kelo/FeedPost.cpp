#include "FeedPost.hpp"

#include <KeloAPI/KeloAPI.hpp>

namespace KeloHost {

using namespace KeloAPI;

namespace {

/// What the parser makes of the object; null where it makes nothing.
template <class P>
std::shared_ptr<typename P::T> readable(const P& parser, const JsonObject& json) {
    try {
        return parser.parse(json);
    } catch (const JsonParseError&) {
        return nullptr;
    }
}

} // namespace

FeedPost::~FeedPost() = default;

std::shared_ptr<FeedPost> FeedPostParser::parse(const JsonObject& json) const {
    const auto [channel, byline, audio, tags, entities] =
        json.values("channel", "byline", "audio", "tags", "entities");
    auto made = std::make_shared<FeedPost>();
    made->post = PostParser().parse(json);
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

} // namespace KeloHost
