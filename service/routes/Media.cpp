#include "service/http/FileAnswer.hpp"
#include "service/media/MediaLibrary.hpp"
#include "service/routes/Guard.hpp"
#include "service/routes/Routes.hpp"

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

[[noreturn]] void refuseUnknown() {
    throw ServiceError(404, ErrorCode::notFound, "There is no such file");
}

Answer answerWith(const Call& call, Media media) {
    Answer answer = fileAnswer(call.request, media.contentType, std::move(media.bytes));
    answer.atMediaRate = true;
    return answer;
}

std::uint64_t seed(std::int64_t id) {
    return static_cast<std::uint64_t>(id);
}

/// The rendition at this path.
PostRendition requireRendition(const std::string& path, const Context& context) {
    auto found = context.store.posts.findRendition(path);
    if (!found) {
        refuseUnknown();
    }
    return *found;
}

Answer video(const Call& call, const Context& context) {
    const std::string path = "/media/videos/" + call.argument("file");
    const auto [postId, rendition] = requireRendition(path, context);
    return answerWith(call,
                      findVideo(seed(postId), videoSide(rendition.format, rendition.rate), path));
}

Answer stream(const Call& call, const Context& context) {
    const std::string playlist = "index.m3u8";
    const std::string folder = "/media/videos/" + call.argument("permalink") + "/";
    const std::int64_t postId = requireRendition(folder + playlist, context).postId;
    if (call.argument("file") == playlist) {
        return answerWith(call, makePlaylist(seed(postId)));
    }
    auto part = findStreamPart(seed(postId), folder + call.argument("file"));
    if (!part) {
        refuseUnknown();
    }
    return answerWith(call, std::move(*part));
}

/// The text without its ending, which it must have.
std::string without(const std::string& text, std::string_view ending) {
    if (!text.ends_with(ending)) {
        refuseUnknown();
    }
    return text.substr(0, text.size() - ending.size());
}

Answer thumbnail(const Call& call, const Context& context) {
    const auto postId = context.store.posts.findByPermalink(without(call.argument("file"), ".png"));
    if (!postId) {
        refuseUnknown();
    }
    return answerWith(call, findPicture(seed(*postId), thumbnailSide));
}

Answer avatar(const Call& call, const Context& context) {
    const auto userId = context.store.users.findByAvatar("/media/avatars/" + call.argument("file"));
    if (!userId) {
        refuseUnknown();
    }
    return answerWith(call, findPicture(seed(*userId), avatarSide));
}

Answer channelIcon(const Call& call, const Context& context) {
    const std::string& file = call.argument("file");
    for (const Icon& icon : icons) {
        if (!file.ends_with(icon.ending)) {
            continue;
        }
        const auto channelId = parseIdentifier(without(file, icon.ending));
        if (channelId && context.store.channels.find(*channelId)) {
            return answerWith(call, findPicture(seed(*channelId), icon.side));
        }
        break;
    }
    refuseUnknown();
}

/// The image at the request's own path.
Answer storedImage(const Call& call, const Context& context) {
    const auto found = context.store.images.find(std::string(call.request.path()));
    if (!found) {
        refuseUnknown();
    }
    return answerWith(call, findPicture(seed(found->seed), found->side));
}

} // namespace

void addMediaRoutes(Router& router, const Context& context) {
    router.add("GET", "/media/videos/:file",
               [&context](const Call& call) { return video(call, context); });
    router.add("GET", "/media/videos/:permalink/:file",
               [&context](const Call& call) { return stream(call, context); });
    router.add("GET", "/media/thumbnails/:file",
               [&context](const Call& call) { return thumbnail(call, context); });
    router.add("GET", "/media/avatars/:file",
               [&context](const Call& call) { return avatar(call, context); });
    router.add("GET", "/media/channels/:file",
               [&context](const Call& call) { return channelIcon(call, context); });
    for (const char* images : {"/media/icons/:file", "/media/albums/:file"}) {
        router.add("GET", images,
                   [&context](const Call& call) { return storedImage(call, context); });
    }
}

} // namespace KeloService
