#include "ArchiveFile.hpp"
#include "commands/Commands.hpp"
#include "Failure.hpp"
#include "Host.hpp"
#include "Output.hpp"

#include <CLI/CLI.hpp>

namespace KeloHost {

namespace {

void showFile(const std::shared_ptr<Host>& host, const std::string& path) {
    try {
        const ArchiveFile::Content content = ArchiveFile::read(path);
        host->output().archived(content.className, content.fields);
        host->end();
    } catch (const Failure& failure) {
        host->end(failure);
    }
}

} // namespace

Command addShow(CLI::App& app) {
    auto* command =
        app.add_subcommand("show", "Show what a file holds that save, or a phone, wrote");
    const auto path = std::make_shared<std::string>();
    command->add_option("FILE", *path, "The file")->required()->type_name("");
    return {command, [path](const std::shared_ptr<Host>& host) { showFile(host, *path); }};
}

} // namespace KeloHost
