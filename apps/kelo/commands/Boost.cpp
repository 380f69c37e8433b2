#include "commands/Commands.hpp"
#include "Host.hpp"
#include "Identifier.hpp"
#include "Output.hpp"

#include <KeloAPI/endpoints/RecommendationsEndpoint.hpp>

#include <CLI/CLI.hpp>

namespace KeloHost {

namespace {

using namespace KeloAPI;

struct Arguments {
    std::string kind;
    std::string id;
    std::string boost;
};

void sendBoost(const std::shared_ptr<Host>& host, const Arguments& arguments) {
    const auto completion = [=](const RecommendationResult& result) {
        if (result.success()) {
            host->output().done(arguments.boost + " feedback on " + arguments.kind, arguments.id,
                                std::nullopt);
            host->end();
        } else {
            host->fail(*result.error());
        }
    };
    const auto endpoint = RecommendationsEndpoint::create();
    const auto boost = recommendationBoostOf(arguments.boost).value();
    if (arguments.kind == "user") {
        endpoint->addUserFeedback(arguments.id, boost, completion);
    } else {
        endpoint->addPostFeedback(arguments.id, boost, completion);
    }
}

} // namespace

Command addBoost(CLI::App& app) {
    auto* command = app.add_subcommand("boost", "Say whether you want more of a user or post");
    const auto arguments = std::make_shared<Arguments>();
    command->add_option("KIND", arguments->kind, "user or post")
        ->required()
        ->type_name("")
        ->check(CLI::IsMember({"user", "post"}));
    addIdentifier(*command, "ID", arguments->id, "Its identifier");
    command->add_option("BOOST", arguments->boost, "positive, neutral or negative")
        ->required()
        ->type_name("")
        ->check(CLI::IsMember({"positive", "neutral", "negative"}));
    return {command,
            [arguments](const std::shared_ptr<Host>& host) { sendBoost(host, *arguments); }};
}

} // namespace KeloHost
