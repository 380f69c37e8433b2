#include "commands/Commands.hpp"
#include "Host.hpp"
#include "Identifier.hpp"
#include "Output.hpp"

#include <KeloAPI/endpoints/LoopsEndpoint.hpp>
#include <KeloAPI/model/KLEmpty.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>

#include <CLI/CLI.hpp>

namespace KeloHost {

namespace {

using namespace KeloAPI;

/// Reads what the service answers, as other calls do: a `LoopsEndpoint` by itself tells nobody.
class AnsweredLoopsEndpoint : public LoopsEndpoint {
public:
    using Completion = std::function<void(const std::optional<Error>& error)>;

    std::shared_ptr<EndpointRequest> request(TextCompletion /*completionHandler*/) override {
        return Endpoint::request(
            std::make_shared<KLEmptyParser>(),
            [completion = _completion](const std::vector<std::shared_ptr<KLEmpty>>&,
                                       const std::optional<Metadata>&, const Timeline&,
                                       const std::optional<Error>& error) { completion(error); });
    }

protected:
    AnsweredLoopsEndpoint(Key key, Completion completion)
        : LoopsEndpoint(key)
        , _completion(std::move(completion)) {}

private:
    Completion _completion;
};

void submitLoops(const std::shared_ptr<Host>& host, const std::string& postId, std::int64_t count) {
    const auto endpoint =
        Endpoint::make<AnsweredLoopsEndpoint>([=](const std::optional<Error>& error) {
            if (!error) {
                host->output().done("reported " + std::to_string(count) + " loops of post", postId,
                                    std::nullopt);
                host->end();
            } else {
                host->fail(*error);
            }
        });
    KLWatchPost post;
    post.postId = postId;
    endpoint->submit(count, post);
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
