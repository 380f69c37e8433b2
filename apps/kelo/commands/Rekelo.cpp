#include "commands/Commands.hpp"
#include "Host.hpp"
#include "Identifier.hpp"
#include "Output.hpp"
#include "Progress.hpp"

#include <KeloAPI/endpoints/RekeloActionEndpoint.hpp>
#include <KeloAPI/endpoints/TimelineEndpoint.hpp>

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

/// Looks a post up in a feed, page by page, because only there the service says which repost of it
/// is the user's own; then takes that back.
class TakeBack : public std::enable_shared_from_this<TakeBack> {
public:
    TakeBack(std::shared_ptr<Host> host, std::string postId)
        : _host(std::move(host))
        , _postId(std::move(postId))
        , _progress(true) {}

    void searchIn(const std::string& feed) {
        const auto endpoint = TimelineEndpoint::create(feed);
        Parameters parameters = endpoint->parameters();
        parameters["size"] = 100;
        endpoint->setParameters(std::move(parameters));
        search(endpoint);
    }

private:
    void search(const std::shared_ptr<TimelineEndpoint>& page) {
        _progress.show("looking for the post, " + std::to_string(_seen) + " seen …");
        page->fetch([self = shared_from_this()](const TimelineResult& result) {
            self->_progress.clear();
            if (const auto* success = result.success()) {
                self->received(*success);
            } else {
                self->_host->fail(*result.error());
            }
        });
    }

    void received(const TimelineSuccess& page) {
        _seen += page.posts.size();
        for (const auto& post : page.posts) {
            if (post->postId == _postId) {
                found(post);
                return;
            }
        }
        if (page.nextPage) {
            search(page.nextPage);
        } else {
            _host->end(Failure(ExitCode::Failed, "there is no post " + _postId + " in that feed"));
        }
    }

    void found(const std::shared_ptr<KLWatchPost>& post) {
        if (post->rekeloed()) {
            toggleRekelo(_host, post, false);
        } else {
            _host->end(
                Failure(ExitCode::Failed, "post " + _postId + " is not reposted by this user"));
        }
    }

    const std::shared_ptr<Host> _host;
    const std::string _postId;
    Progress _progress;
    std::size_t _seen = 0;
};

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
    const auto feed = std::make_shared<std::string>("all");
    addIdentifier(*command, "POST", *postId, "The post's identifier");
    command->add_option("--feed", *feed, "The feed to look the post up in")
        ->type_name("PATH")
        ->capture_default_str();
    return {command, [=](const std::shared_ptr<Host>& host) {
                std::make_shared<TakeBack>(host, *postId)->searchIn(*feed);
            }};
}

} // namespace KeloHost
