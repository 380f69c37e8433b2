#include "service/routes/TimelinePage.hpp"

#include "service/records/PostRecord.hpp"
#include "service/routes/Pages.hpp"

#include <utility>

namespace KeloService {

Json timelinePage(const Call& call, const Context& context, const Feed& feed,
                  const std::string& name, const std::optional<Session>& session) {
    Page page = readPage(context.store.feeds, feed, name, call.request);
    const PostView view = readView(call.request, session);
    Json records = Json::array();
    for (const Post& post : context.store.posts.find(page.postIds, view)) {
        records.push_back(postRecord(post, context.baseUrl));
    }
    if (feed.channelId) {
        page.metadata.channel = context.store.channels.find(*feed.channelId);
    }
    return pageRecord(page.metadata, std::move(records), context.baseUrl);
}

Channel requireChannel(const Call& call, const Context& context) {
    auto channel = context.store.channels.find(call.identifier("id"));
    if (!channel) {
        throw ServiceError(404, ErrorCode::notFound, "There is no such channel");
    }
    return *std::move(channel);
}

} // namespace KeloService
