#include "commands/Commands.hpp"
#include "Host.hpp"
#include "Identifier.hpp"
#include "Output.hpp"

#include <KeloAPI/loops/LoopsEndpoint.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>

#include <CLI/CLI.hpp>

namespace KeloHost {

namespace {

using namespace KeloAPI;

/// Reporting loops has no completion: the library tells of its end in one diagnostic line.
void submitLoops(const std::shared_ptr<Host>& host, const std::string& postId, std::int64_t count) {
    host->onDiagnostic([=](const std::string& line) {
        const std::string news = "Submitted loops with error: ";
        if (!line.starts_with(news)) {
            return;
        }
        const std::string error = line.substr(news.size());
        if (error == "nil") {
            host->output().done("reported " + std::to_string(count) + " loops of post", postId,
                                std::nullopt);
            host->end();
        } else {
            host->end(Failure(ExitCode::Failed, "the loops were not reported: " + error));
        }
    });
    KLWatchPost post;
    post.postId = postId;
    LoopsEndpoint::create()->submit(count, post);
}

} // namespace

Command addLoops(CLI::App& app) {
    auto* command = app.add_subcommand("loops", "Report how often a post has looped");
    const auto postId = std::make_shared<std::string>();
    const auto count = std::make_shared<std::int64_t>(0);
    addIdentifier(*command, "POST", *postId, "The post's identifier");
    command->add_option("COUNT", *count, "How often it has looped")
        ->required()
        ->type_name("")
        ->check(CLI::Range(std::int64_t{1}, std::int64_t{1'000'000'000}));
    return {command,
            [=](const std::shared_ptr<Host>& host) { submitLoops(host, *postId, *count); }};
}

} // namespace KeloHost
