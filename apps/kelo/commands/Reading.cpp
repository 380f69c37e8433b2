#include "commands/Commands.hpp"
#include "Feed.hpp"
#include "Records.hpp"
#include "Text.hpp"

#include <algorithm>

namespace KeloHost {

using namespace KeloAPI;

static void showUserAt(const HostPointer& host, const std::string& path,
                       const std::string& complaint, Parameters parameters = {}) {
    readRecord(
        host, path, std::make_shared<FeedUserParser>(), complaint,
        [host](const FeedUser& user) { host->show(fieldsOf(user), linesOf(user)); },
        std::move(parameters));
}

void showMe(const HostPointer& host, const Arguments& /*arguments*/) {
    showUserAt(host, "users/me", "the service sent no user");
}

void showUser(const HostPointer& host, const Arguments& arguments) {
    const std::string user = arguments.text("USER");
    const bool isId =
        std::all_of(user.begin(), user.end(), [](char c) { return c >= '0' && c <= '9'; });
    const std::string complaint = "there is no user named " + user;
    isId ? showUserAt(host, "users/" + user, complaint)
         : showUserAt(host, "users", complaint, {{"username", user}});
}

void listChannels(const HostPointer& host, const Arguments& /*arguments*/) {
    readRecords(host, "channels", std::make_shared<KLChannelParser>(), [host](const auto& all) {
        host->output().writeAll(all, [](const auto& channels) { return linesOf(channels); });
        host->end();
    });
}

void showChannel(const HostPointer& host, const Arguments& arguments) {
    // With the first page of its timeline.
    const auto parser =
        std::make_shared<KLChannelParser>(std::make_shared<KLChannelParser::TimelineParser>(
            std::make_shared<AnyObjectParserAdaptor>(std::make_shared<FeedPostParser>())));
    const bool details = arguments.has("--details");
    readRecord(
        host, "channels/" + arguments.text("ID"), parser, "the service sent no channel",
        [=](const KLChannel& channel) { host->show(fieldsOf(channel), linesOf(channel, details)); },
        {{"size", arguments.number("--size")}});
}

void showInserts(const HostPointer& host, const Arguments& arguments) {
    readRecords(host, "inserts/" + arguments.text("FEED"), std::make_shared<FeedCardParser>(),
                [host](const auto& cards) {
                    host->output().writeAll(cards, [](const auto& all) { return linesOf(all); });
                    host->end();
                });
}

void showVenue(const HostPointer& host, const Arguments& arguments) {
    readRecord(host, "venues/" + arguments.text("ID"), std::make_shared<KLFoursquareVenueParser>(),
               "the service sent no venue",
               [host](const KLVenue& venue) { host->show(fieldsOf(venue), linesOf(venue)); });
}

void showSounds(const HostPointer& host, const Arguments& /*arguments*/) {
    SoundboardEndpoint::create(Api::session(SessionType::Authenticated))
        ->fetchSounds([host](const std::vector<std::shared_ptr<SoundboardSound>>& sounds,
                             const std::optional<Error>& error) {
            host->hear(error, [&] {
                host->output().writeAll(sounds, [](const auto& all) { return linesOf(all); });
                host->end();
            });
        });
}

void showOrSubmitViews(const HostPointer& host, const Arguments& arguments) {
    const std::string id = arguments.text("ID");
    const auto endpoint = LongformViewsEndpoint::create(id);
    if (arguments.has("--submit")) {
        endpoint->submitView([=](const std::optional<Error>& error) {
            host->hear(error, [&] { host->showDone("reported a view of video", id); });
        });
        return;
    }
    endpoint->fetchViews(
        [host](const std::shared_ptr<KLLongformViews>& views, const std::optional<Error>& error) {
            host->hear(error, [&] {
                if (views == nullptr) {
                    throw Failure(ExitCode::Failed, "the service sent no views");
                }
                host->show({{"longformId", views->longformId}, {"count", views->count}},
                           {countText(views->count, "view")});
            });
        });
}

} // namespace KeloHost
