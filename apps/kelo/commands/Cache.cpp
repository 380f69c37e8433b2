#include "commands/Commands.hpp"
#include "Failure.hpp"
#include "Host.hpp"
#include "Output.hpp"
#include "VideoCache.hpp"

#include <CLI/CLI.hpp>

namespace KeloHost {

namespace {

using Action = std::function<void(Output& output)>;

void listFiles(Output& output) {
    output.cachedFiles(VideoCache::files());
}

void trim(Output& output, std::int64_t count) {
    const std::size_t before = VideoCache::files().size();
    VideoCache::trim(count);
    const std::size_t left = VideoCache::files().size();
    output.trimmed(before - std::min(before, left), left);
}

void showDirectory(Output& output) {
    output.directory(VideoCache::directory());
}

} // namespace

Command addCache(CLI::App& app) {
    auto* command = app.add_subcommand("cache", "Look after the videos that were downloaded");
    command->require_subcommand(1);
    const auto action = std::make_shared<Action>();
    const auto count = std::make_shared<std::int64_t>(0);
    command->add_subcommand("list", "Show the files, newest first, with their age and size")
        ->callback([action] { *action = listFiles; });
    auto* trimming = command->add_subcommand(
        "trim", "Remove the oldest files: the newest N and one more are kept");
    trimming->add_option("N", *count, "One less than the number of files to keep")
        ->required()
        ->type_name("")
        ->check(CLI::Range(std::int64_t{0}, std::int64_t{1'000'000'000}));
    trimming->callback([=] { *action = [count](Output& output) { trim(output, *count); }; });
    command->add_subcommand("path", "Show the directory")->callback([action] {
        *action = showDirectory;
    });
    return {command, [action](const std::shared_ptr<Host>& host) {
                try {
                    (*action)(host->output());
                    host->end();
                } catch (const Failure& failure) {
                    host->end(failure);
                }
            }};
}

} // namespace KeloHost
