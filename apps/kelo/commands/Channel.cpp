#include "commands/Commands.hpp"
#include "FeedPost.hpp"
#include "Host.hpp"
#include "Identifier.hpp"
#include "Output.hpp"

#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLPagedDataParser.hpp>
#include <KeloAPI/parsing/AnyObjectJsonParser.hpp>

#include <CLI/CLI.hpp>

namespace KeloHost {

namespace {

using namespace KeloAPI;

struct ChannelArguments {
    std::string channelId;
    std::int64_t size = 5;
    bool details = false;
};

/// Reads channels with the first page of their timeline.
std::shared_ptr<KLChannelParser> channelsWithPosts() {
    return std::make_shared<KLChannelParser>(std::make_shared<KLChannelParser::TimelineParser>(
        std::make_shared<AnyObjectParserAdaptor>(std::make_shared<FeedPostParser>())));
}

void showChannel(const std::shared_ptr<Host>& host, const ChannelArguments& arguments) {
    const auto endpoint = Endpoint::create(Api::session(SessionType::Authenticated));
    endpoint->setPath("channels/" + arguments.channelId);
    endpoint->setParameters({{"size", arguments.size}});
    endpoint->request(channelsWithPosts(),
                      [=](const std::vector<std::shared_ptr<KLChannel>>& channels,
                          const std::optional<Metadata>&, const Timeline&,
                          const std::optional<Error>& error) {
                          if (error) {
                              host->fail(*error);
                          } else if (channels.empty()) {
                              host->end(Failure(ExitCode::Failed, "the service names no channel"));
                          } else {
                              host->output().channel(*channels.front(), arguments.details);
                              host->end();
                          }
                      });
}

} // namespace

Command addChannel(CLI::App& app) {
    auto* command = app.add_subcommand("channel", "Show a channel and its first posts");
    const auto arguments = std::make_shared<ChannelArguments>();
    addIdentifier(*command, "ID", arguments->channelId, "The channel's identifier");
    command->add_option("--size", arguments->size, "How many posts")
        ->type_name("N")
        ->check(CLI::Range(1, 1000))
        ->capture_default_str();
    command->add_flag("--details", arguments->details,
                      "Show bylines, venues, music, tags and links, too");
    return {command,
            [arguments](const std::shared_ptr<Host>& host) { showChannel(host, *arguments); }};
}

} // namespace KeloHost
