#include "commands/Commands.hpp"
#include "Host.hpp"
#include "Identifier.hpp"
#include "Output.hpp"

#include <KeloAPI/endpoints/LongformViewsEndpoint.hpp>
#include <KeloAPI/model/KLLongformViews.hpp>

#include <CLI/CLI.hpp>

namespace KeloHost {

namespace {

using namespace KeloAPI;

void showViews(const std::shared_ptr<Host>& host, const std::string& longformId) {
    LongformViewsEndpoint::create(longformId)
        ->fetchViews(
            [=](const std::shared_ptr<KLLongformViews>& views, const std::optional<Error>& error) {
                if (views) {
                    host->output().views(*views);
                    host->end();
                } else if (!error) {
                    host->end(Failure(ExitCode::Failed, "the service names no views"));
                } else {
                    host->fail(*error);
                }
            });
}

void submitView(const std::shared_ptr<Host>& host, const std::string& longformId) {
    LongformViewsEndpoint::create(longformId)->submitView([=](const std::optional<Error>& error) {
        if (!error) {
            host->output().done("reported a view of video", longformId, std::nullopt);
            host->end();
        } else {
            host->fail(*error);
        }
    });
}

} // namespace

Command addViews(CLI::App& app) {
    auto* command = app.add_subcommand("views", "Show the views of a long-form video");
    const auto longformId = std::make_shared<std::string>();
    const auto submits = std::make_shared<bool>(false);
    addIdentifier(*command, "ID", *longformId, "The video's identifier");
    command->add_flag("--submit", *submits, "Report a view of one's own instead");
    return {command, [=](const std::shared_ptr<Host>& host) {
                *submits ? submitView(host, *longformId) : showViews(host, *longformId);
            }};
}

} // namespace KeloHost
