#include "service/records/MetadataRecord.hpp"
#include "service/routes/Guard.hpp"
#include "service/routes/Routes.hpp"
#include "service/routes/TimelinePage.hpp"

namespace KeloService {

void addChannelRoutes(Router& router, const Context& context) {
    router.add("GET", "/channels/:id", [&context](const Call& call) {
        const auto session = presentedSession(call, context);
        const Channel channel = requireChannel(call, context);
        const Feed feed = channelFeed(channel.channelId, channel.name);
        Json record = channelRecord(channel, context.baseUrl);
        record["timeline"] =
            timelinePage(call, context, feed,
                         "/timelines/channels/" + std::to_string(channel.channelId), session);
        return dataAnswer(record);
    });
}

} // namespace KeloService
