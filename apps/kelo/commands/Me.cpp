#include "commands/Commands.hpp"
#include "Host.hpp"
#include "Output.hpp"

#include <KeloAPI/endpoints/MeEndpoint.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>

#include <CLI/CLI.hpp>

namespace KeloHost {

namespace {

void showMe(const std::shared_ptr<Host>& host) {
    KeloAPI::MeEndpoint::create()->get([host](const KeloAPI::MeResult& result) {
        if (const auto* success = result.success()) {
            host->output().user(*success->user);
            host->end();
        } else {
            host->fail(*result.error());
        }
    });
}

} // namespace

Command addMe(CLI::App& app) {
    return {app.add_subcommand("me", "Show the signed-in user"), showMe};
}

} // namespace KeloHost
