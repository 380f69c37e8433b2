#include "commands/Commands.hpp"
#include "Host.hpp"
#include "Output.hpp"

#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/endpoints/SoundboardEndpoint.hpp>
#include <KeloAPI/model/SoundboardSound.hpp>

#include <CLI/CLI.hpp>

namespace KeloHost {

namespace {

using namespace KeloAPI;

void showSounds(const std::shared_ptr<Host>& host) {
    SoundboardEndpoint::create(Api::session(SessionType::Authenticated))
        ->fetchSounds([=](const std::vector<std::shared_ptr<SoundboardSound>>& sounds,
                          const std::optional<Error>& error) {
            if (!error) {
                host->output().sounds(sounds);
                host->end();
            } else {
                host->fail(*error);
            }
        });
}

} // namespace

Command addSounds(CLI::App& app) {
    return {app.add_subcommand("sounds", "Show the soundboard"), showSounds};
}

} // namespace KeloHost
