#include "service/http/FileAnswer.hpp"
#include "service/media/MediaLibrary.hpp"
#include "service/routes/Routes.hpp"

#include <algorithm>
#include <string_view>

namespace KeloService {
namespace {

constexpr int thumbnailSide = 480;
constexpr int avatarSide = 160;

struct Icon {
    std::string_view ending;
    int side;
};
/// The longer endings first: the shortest is the end of each.
constexpr Icon icons[] = {{"-explore@2x.png", 240}, {"@2x.png", 120}, {".png", 60}};

/// Images that belong to no post, user or channel.
constexpr std::string_view looseImages[] = {
    "/media/icons/category-4bf58dd8d48988d1e0931735_32.png",
    "/media/icons/category-4bf58dd8d48988d163941735_32.png",
    "/media/icons/category-4bf58dd8d48988d1e2931735_32.png",
    "/media/icons/category-4bf58dd8d48988d15e941735_32.png",
    "/media/icons/category-4bf58dd8d48988d129951735_32.png",
    "/media/albums/3001.png",
    "/media/albums/3002.png",
    "/media/albums/3004.png",
    "/media/albums/3006.png",
    "/media/icons/byline-pick.png",
    "/media/icons/byline-fan.png",
    "/media/icons/byline-fire.png",
};
constexpr std::uint64_t firstLooseSeed = 70001;

ServiceError unknownFile() {
    return {404, "There is no such file"};
}

/// Changes with every byte of the file: FNV-1a, 64 bits.
std::string entityTag(const std::string& bytes) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const char byte : bytes) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
    }
    return std::to_string(hash);
}

Answer mediaAnswer(const Call& call, Media media) {
    const std::string tag = entityTag(media.bytes);
    const std::size_t size = media.bytes.size();
    return fileAnswer(call.request, media.contentType,
                      {size,
                       [bytes = std::move(media.bytes)](std::uint64_t offset, std::size_t count) {
                           return bytes.substr(offset, count);
                       }},
                      tag);
}

/// The number that the statement finds for the value.
template <typename Value>
std::uint64_t requireSeed(const Context& context, const char* sql, const Value& value) {
    const auto found = context.database.number(sql, value);
    if (!found) {
        throw unknownFile();
    }
    return static_cast<std::uint64_t>(*found);
}

std::uint64_t postWithRendition(const Context& context, const std::string& path) {
    return requireSeed(context, "SELECT postId FROM renditions WHERE path = ?1", path);
}

Answer video(const Call& call, const Context& context) {
    const std::string path = "/media/videos/" + call.argument("file");
    const std::uint64_t seed = postWithRendition(context, path);
    int side = 0;
    {
        Query rendition =
            context.database.query("SELECT format, rate FROM renditions WHERE path = ?1", path);
        rendition.next();
        side = videoSide(rendition.text(0), rendition.real(1));
    }
    return mediaAnswer(call, findVideo(seed, side, path));
}

Answer stream(const Call& call, const Context& context) {
    const std::string playlist = "index.m3u8";
    const std::string folder = "/media/videos/" + call.argument("permalink") + "/";
    const std::uint64_t seed = postWithRendition(context, folder + playlist);
    if (call.argument("file") == playlist) {
        return mediaAnswer(call, makePlaylist(seed));
    }
    auto part = findStreamPart(seed, folder + call.argument("file"));
    if (!part) {
        throw unknownFile();
    }
    return mediaAnswer(call, std::move(*part));
}

/// The text without its ending, which it must have.
std::string without(const std::string& text, std::string_view ending) {
    if (!text.ends_with(ending)) {
        throw unknownFile();
    }
    return text.substr(0, text.size() - ending.size());
}

Answer thumbnail(const Call& call, const Context& context) {
    const std::uint64_t seed =
        requireSeed(context, "SELECT postId FROM posts WHERE permalinkId = ?1",
                    without(call.argument("file"), ".png"));
    return mediaAnswer(call, findPicture(seed, thumbnailSide));
}

Answer avatar(const Call& call, const Context& context) {
    const std::uint64_t seed =
        requireSeed(context, "SELECT userId FROM users WHERE avatarPath = ?1",
                    "/media/avatars/" + call.argument("file"));
    return mediaAnswer(call, findPicture(seed, avatarSide));
}

Answer channelIcon(const Call& call, const Context& context) {
    const std::string& file = call.argument("file");
    const auto icon = std::find_if(std::begin(icons), std::end(icons), [&file](const Icon& known) {
        return file.ends_with(known.ending);
    });
    if (icon == std::end(icons)) {
        throw unknownFile();
    }
    const std::uint64_t seed =
        requireSeed(context, "SELECT channelId FROM channels WHERE channelId = ?1",
                    parseNumber<std::int64_t>(without(file, icon->ending)));
    return mediaAnswer(call, findPicture(seed, icon->side));
}

Answer looseImage(const Call& call, const Context& /*context*/) {
    const std::string_view path = call.request.path();
    const auto image = std::find(std::begin(looseImages), std::end(looseImages), path);
    if (image == std::end(looseImages)) {
        throw unknownFile();
    }
    const auto place = static_cast<std::uint64_t>(image - std::begin(looseImages));
    const int side = path.ends_with("_32.png") ? 32 : path.starts_with("/media/icons") ? 40 : 300;
    return mediaAnswer(call, findPicture(firstLooseSeed + place, side));
}

} // namespace

void addMediaRoutes(Routes& routes) {
    routes.add("GET", "/media/videos/:file", video);
    routes.add("GET", "/media/videos/:permalink/:file", stream);
    routes.add("GET", "/media/thumbnails/:file", thumbnail);
    routes.add("GET", "/media/avatars/:file", avatar);
    routes.add("GET", "/media/channels/:file", channelIcon);
    routes.add("GET", "/media/icons/:file", looseImage);
    routes.add("GET", "/media/albums/:file", looseImage);
}

} // namespace KeloService
