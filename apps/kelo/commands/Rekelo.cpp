#include "commands/Commands.hpp"
#include "Host.hpp"
#include "Identifier.hpp"
#include "Output.hpp"

#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/endpoints/RekeloActionEndpoint.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>

#include <CLI/CLI.hpp>

namespace KeloHost {

namespace {

using namespace KeloAPI;

void toggleRekelo(const std::shared_ptr<Host>& host, const std::shared_ptr<KLWatchPost>& post,
                  bool on) {
    // The endpoint does not keep the post alive; its completion does, for a retry.
    RekeloActionEndpoint::create(post)->toggle(on, [=](const PostActionResult<KLRekelo>& result) {
        if (const auto* success = result.success()) {
            host->output().done(on ? "reposted post" : "took back the repost of post",
                                *post->postId,
                                success->item ? success->item->rekeloId : std::nullopt);
            host->end();
        } else {
            host->fail(*result.error());
        }
    });
}

/// Asks for the post first: only the service knows which repost of it is the user's own.
void takeBack(const std::shared_ptr<Host>& host, const std::string& postId) {
    const auto endpoint = Endpoint::create(Api::session(SessionType::Authenticated));
    endpoint->setPath("posts/" + postId);
    endpoint->request(
        std::make_shared<PostParser>(),
        [=](const std::vector<std::shared_ptr<KLWatchPost>>& posts, const std::optional<Metadata>&,
            const Timeline&, const std::optional<Error>& error) {
            if (error) {
                host->fail(*error);
            } else if (posts.empty() || !posts.front()->rekeloed()) {
                host->end(
                    Failure(ExitCode::Failed, "post " + postId + " is not reposted by this user"));
            } else {
                toggleRekelo(host, posts.front(), false);
            }
        });
}

} // namespace

Command addRekelo(CLI::App& app) {
    auto* command = app.add_subcommand("rekelo", "Repost a post");
    const auto postId = std::make_shared<std::string>();
    addIdentifier(*command, "POST", *postId, "The post's identifier");
    return {command, [postId](const std::shared_ptr<Host>& host) {
                const auto post = std::make_shared<KLWatchPost>();
                post->postId = *postId;
                toggleRekelo(host, post, true);
            }};
}

Command addUnrekelo(CLI::App& app) {
    auto* command = app.add_subcommand("unrekelo", "Take a repost back");
    const auto postId = std::make_shared<std::string>();
    addIdentifier(*command, "POST", *postId, "The post's identifier");
    return {command, [postId](const std::shared_ptr<Host>& host) { takeBack(host, *postId); }};
}

} // namespace KeloHost
