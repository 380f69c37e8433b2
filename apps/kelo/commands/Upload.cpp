#include "commands/Commands.hpp"
#include "Failure.hpp"
#include "Host.hpp"
#include "Uploader.hpp"

#include <CLI/CLI.hpp>

#include <string>

namespace KeloHost {

namespace {

struct UploadArguments {
    std::string file;
    std::int64_t segmentSize = std::int64_t{8} << 20;
    std::int64_t parallel = 4;
};

void upload(const std::shared_ptr<Host>& host, const UploadArguments& arguments) {
    try {
        auto file = std::make_unique<SegmentedFile>(arguments.file, arguments.segmentSize);
        std::make_shared<Uploader>(host, std::move(file), arguments.parallel)->start();
    } catch (const Failure& failure) {
        host->end(failure);
    }
}

} // namespace

Command addUpload(CLI::App& app) {
    auto* command = app.add_subcommand("upload", "Upload a long-form video, an MP4 file");
    const auto arguments = std::make_shared<UploadArguments>();
    command->add_option("FILE", arguments->file, "The video's file")->required()->type_name("");
    command->add_option("--segment-size", arguments->segmentSize, "Bytes that are sent at once")
        ->type_name("BYTES")
        ->check(CLI::Range(std::int64_t{1}, std::int64_t{1} << 30))
        ->capture_default_str();
    command->add_option("--parallel", arguments->parallel, "Segments that are under way together")
        ->type_name("N")
        ->check(CLI::Range(1, 16))
        ->capture_default_str();
    return {command, [arguments](const std::shared_ptr<Host>& host) { upload(host, *arguments); }};
}

} // namespace KeloHost
