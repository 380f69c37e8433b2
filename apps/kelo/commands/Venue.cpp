#include "commands/Commands.hpp"
#include "Host.hpp"
#include "Identifier.hpp"
#include "Output.hpp"

#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPI/model/KLVenue.hpp>

#include <CLI/CLI.hpp>

namespace KeloHost {

namespace {

using namespace KeloAPI;

void showVenue(const std::shared_ptr<Host>& host, const std::string& venueId) {
    const auto endpoint = Endpoint::create(Api::session(SessionType::Authenticated));
    endpoint->setPath("venues/" + venueId);
    endpoint->request(std::make_shared<KLFoursquareVenueParser>(),
                      [=](const std::vector<std::shared_ptr<KLVenue>>& venues,
                          const std::optional<Metadata>&, const Timeline&,
                          const std::optional<Error>& error) {
                          if (error) {
                              host->fail(*error);
                          } else if (venues.empty()) {
                              host->end(Failure(ExitCode::Failed, "the service names no venue"));
                          } else {
                              host->output().venue(*venues.front());
                              host->end();
                          }
                      });
}

} // namespace

Command addVenue(CLI::App& app) {
    auto* command = app.add_subcommand("venue", "Show a venue");
    const auto venueId = std::make_shared<std::string>();
    addIdentifier(*command, "ID", *venueId,
                  "The venue's identifier, as timeline --details names it");
    return {command, [=](const std::shared_ptr<Host>& host) { showVenue(host, *venueId); }};
}

} // namespace KeloHost
