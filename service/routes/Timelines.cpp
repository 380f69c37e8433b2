#include "service/routes/Guard.hpp"
#include "service/routes/Routes.hpp"
#include "service/routes/TimelinePage.hpp"

namespace KeloService {
namespace {

using FeedOf = Feed (*)(const Call&, const Context&);

Answer timeline(const Call& call, const Context& context, FeedOf feedOf) {
    const auto session = presentedSession(call, context);
    const Feed feed = feedOf(call, context);
    return dataAnswer(timelinePage(call, context, feed, std::string(call.request.path()), session));
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
    const Channel channel = requireChannel(call, context);
    return channelFeed(channel.channelId, channel.name);
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
