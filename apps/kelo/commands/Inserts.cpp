#include "commands/Commands.hpp"
#include "FeedCard.hpp"
#include "Host.hpp"
#include "Identifier.hpp"
#include "Output.hpp"

#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/api/Endpoint.hpp>

#include <CLI/CLI.hpp>

namespace KeloHost {

namespace {

using namespace KeloAPI;

void showInserts(const std::shared_ptr<Host>& host, const std::string& feed) {
    const auto endpoint = Endpoint::create(Api::session(SessionType::Authenticated));
    endpoint->setPath("inserts/" + feed);
    endpoint->request(std::make_shared<FeedCardParser>(),
                      [=](const std::vector<std::shared_ptr<KLFeedInsert>>& inserts,
                          const std::optional<Metadata>&, const Timeline&,
                          const std::optional<Error>& error) {
                          if (error) {
                              host->fail(*error);
                          } else {
                              host->output().inserts(inserts);
                              host->end();
                          }
                      });
}

} // namespace

Command addInserts(CLI::App& app) {
    auto* command = app.add_subcommand("inserts", "Show the cards between a feed's posts");
    const auto feed = std::make_shared<std::string>();
    addIdentifier(*command, "FEED", *feed, "The feed: home, popular, ...");
    return {command, [=](const std::shared_ptr<Host>& host) { showInserts(host, *feed); }};
}

} // namespace KeloHost
