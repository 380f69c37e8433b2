#include "service/store/Channels.hpp"

namespace KeloService {

std::optional<Channel> Channels::find(std::int64_t channelId) {
    const auto lock = database_.lock();
    Query query =
        database_.query("SELECT channelId, name, description, fontColor, backgroundColor, "
                        "vanityUrl, created FROM channels WHERE channelId = ?1");
    if (!query.bind(channelId).next()) {
        return std::nullopt;
    }
    Channel channel;
    channel.channelId = query.integer(0);
    channel.name = query.text(1);
    channel.description = query.text(2);
    channel.fontColor = query.text(3);
    channel.backgroundColor = query.text(4);
    channel.vanityUrl = query.text(5);
    channel.created = query.integer(6);
    return channel;
}

} // namespace KeloService
