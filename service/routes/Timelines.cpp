#include "service/records/PostRecord.hpp"
#include "service/routes/Guard.hpp"
#include "service/routes/Pages.hpp"
#include "service/routes/Routes.hpp"

namespace KeloService {
namespace {

using FeedOf = Feed (*)(const Call&, const Context&);

Answer timeline(const Call& call, const Context& context, FeedOf feedOf) {
    const auto session = presentedSession(call, context);
    const Feed feed = feedOf(call, context);
    Page page = readPage(context.store.feeds, feed, std::string(call.request.path()), call.request);
    const PostView view = readView(call.request, session);
    Json records = Json::array();
    for (const Post& post : context.store.posts.find(page.postIds, view)) {
        records.push_back(postRecord(post, context.baseUrl));
    }
    if (feed.channelId) {
        page.metadata.channel = context.store.channels.find(*feed.channelId);
    }
    return dataAnswer(pageRecord(page.metadata, std::move(records), context.baseUrl));
}

Feed home(const Call& call, const Context& context) {
    return homeFeed(requireSession(call, context).userId);
}

Feed ofUser(const Call& call, const Context& context) {
    const User user = requireUser(call, context);
    return userFeed(user.userId, user.username);
}

Feed likedByUser(const Call& call, const Context& context) {
    const User user = requireUser(call, context);
    return userLikesFeed(user.userId, user.username);
}

Feed ofChannel(const Call& call, const Context& context) {
    const auto channel = context.store.channels.find(call.identifier("id"));
    if (!channel) {
        throw ServiceError(404, ErrorCode::notFound, "There is no such channel");
    }
    return channelFeed(channel->channelId, channel->name);
}

Feed ofTag(const Call& call, const Context& context) {
    return context.store.feeds.tagFeed(call.argument("tag"));
}

template <Feed (*make)()>
Feed fixed(const Call& /*call*/, const Context& /*context*/) {
    return make();
}

struct TimelineRoute {
    const char* path;
    FeedOf feed;
};

constexpr TimelineRoute routes[] = {
    {"/timelines/all", fixed<allFeed>},
    {"/timelines/home", home},
    {"/timelines/popular", fixed<popularFeed>},
    {"/timelines/latest", fixed<latestFeed>},
    {"/timelines/editors-picks", fixed<picksFeed>},
    {"/timelines/empty", fixed<emptyFeed>},
    {"/timelines/users/:id", ofUser},
    {"/timelines/users/:id/likes", likedByUser},
    {"/timelines/channels/:id", ofChannel},
    {"/timelines/tags/:tag", ofTag},
};

} // namespace

void addTimelineRoutes(Router& router, const Context& context) {
    for (const TimelineRoute& route : routes) {
        router.add("GET", route.path, [&context, feed = route.feed](const Call& call) {
            return timeline(call, context, feed);
        });
    }
}

} // namespace KeloService
