#include "commands/Commands.hpp"
#include "Host.hpp"
#include "Identifier.hpp"
#include "Output.hpp"

#include <KeloAPI/endpoints/UserEndpoint.hpp>

#include <CLI/CLI.hpp>

namespace KeloHost {

namespace {

using namespace KeloAPI;

Command addFollowCommand(CLI::App& app, const char* name, const char* description, bool following) {
    auto* command = app.add_subcommand(name, description);
    const auto userId = std::make_shared<std::string>();
    addIdentifier(*command, "USER", *userId, "The user's identifier");
    return {command, [=](const std::shared_ptr<Host>& host) {
                UserEndpoint::create(*userId)->setFollowingOnTwitter(
                    following, [=](const UserResult& result) {
                        if (result.success() != nullptr) {
                            host->output().done(following ? "following user"
                                                          : "no longer following user",
                                                *userId, std::nullopt);
                            host->end();
                        } else {
                            host->fail(*result.error());
                        }
                    });
            }};
}

} // namespace

Command addFollow(CLI::App& app) {
    return addFollowCommand(app, "follow", "Follow a user's account outside the service", true);
}

Command addUnfollow(CLI::App& app) {
    return addFollowCommand(app, "unfollow", "Stop following a user's account outside the service",
                            false);
}

} // namespace KeloHost
