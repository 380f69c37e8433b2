#include "Steps.hpp"
#include "TemporaryFolder.hpp"
#include "TourHost.hpp"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <vector>

namespace KeloTour {

namespace {

/// The host in Objective-C, beside this program where the build has it.
std::filesystem::path program() {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path() / "example-objc-feed";
}

/// Runs the host, which writes to a file; its exit code.
int run(const std::filesystem::path& folder, const std::filesystem::path& output) {
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, output.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    std::string path = program().string();
    std::string argument = folder.string();
    char* const arguments[] = {path.data(), argument.data(), nullptr};
    pid_t host = 0;
    const int failure = posix_spawn(&host, path.c_str(), &files, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&files);
    check(failure == 0, "the host could not be started");
    int status = 0;
    check(waitpid(host, &status, 0) == host && WIFEXITED(status), "the host did not end by itself");
    return WEXITSTATUS(status);
}

std::vector<std::string> linesOf(const std::filesystem::path& path) {
    std::ifstream file(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    return lines;
}

void hostInObjectiveC() {
    const TemporaryFolder folder;
    const auto videos = folder.path() / "videos";
    std::filesystem::create_directory(videos);
    setenv("KELO_HOST", TourHost::instance().host.c_str(), 1);
    sent("a host in plain Objective-C, example-objc-feed, runs for itself");
    const int exitCode = run(videos, folder.path() / "output");
    const auto lines = linesOf(folder.path() / "output");
    check(exitCode == 0, "it ended with code " + std::to_string(exitCode));
    check(lines.size() > 2, "it said too little");
    came(lines.front());
    came(std::to_string(lines.size() - 2) + " captions of two pages, the first: " + lines.at(1));
    came(lines.back());
    const std::string name = lines.back().substr(0, lines.back().find(':'));
    const auto size = std::filesystem::file_size(videos / name);
    check(lines.back() == name + ": " + std::to_string(size) + " bytes",
          "the file's size is another");
}

} // namespace

void tourObjectiveC(Tour& tour) {
    if (!std::filesystem::exists(program())) {
        note("Without an Objective-C compiler there is no Objective-C face to show.");
        return;
    }
    tour.step("A host in Objective-C signs in, pages a feed and downloads a video",
              hostInObjectiveC);
}

} // namespace KeloTour
