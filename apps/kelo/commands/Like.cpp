#include "commands/Commands.hpp"
#include "Host.hpp"
#include "Identifier.hpp"
#include "Output.hpp"

#include <KeloAPI/endpoints/LikeActionEndpoint.hpp>

#include <CLI/CLI.hpp>

namespace KeloHost {

namespace {

using namespace KeloAPI;

void toggleLike(const std::shared_ptr<Host>& host, const std::string& postId, bool on) {
    const auto post = std::make_shared<KLWatchPost>();
    post->postId = postId;
    // The endpoint does not keep the post alive; its completion does, for a retry.
    LikeActionEndpoint::create(post)->toggle(on, [=](const PostActionResult<KLLike>& result) {
        if (const auto* success = result.success()) {
            host->output().done(on ? "liked post" : "unliked post", *post->postId,
                                success->item ? success->item->likeId : std::nullopt);
            host->end();
        } else {
            host->fail(*result.error());
        }
    });
}

Command addLikeCommand(CLI::App& app, const char* name, const char* description, bool on) {
    auto* command = app.add_subcommand(name, description);
    const auto postId = std::make_shared<std::string>();
    addIdentifier(*command, "POST", *postId, "The post's identifier");
    return {command, [=](const std::shared_ptr<Host>& host) { toggleLike(host, *postId, on); }};
}

} // namespace

Command addLike(CLI::App& app) {
    return addLikeCommand(app, "like", "Like a post", true);
}

Command addUnlike(CLI::App& app) {
    return addLikeCommand(app, "unlike", "Take a like back", false);
}

} // namespace KeloHost
