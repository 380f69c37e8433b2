#include "commands/Commands.hpp"
#include "Text.hpp"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <regex>

namespace KeloHost {

using namespace KeloAPI;

/// One file of the cache.
struct CachedFile {
    std::string name;
    std::uint64_t bytes = 0;
    Date modified;
};

static Parameters fieldsOf(const CachedFile& file) {
    return {{"name", file.name}, {"bytes", file.bytes}, {"modified", valueOf(file.modified)}};
}

namespace {

using Files = std::vector<std::shared_ptr<CachedFile>>;

/// Unfinished downloads have such names; they are not in the cache yet.
bool isUnfinished(const std::string& name) {
    static const std::regex pattern("\\.download-[0-9a-f]{32}\\.part");
    return std::regex_match(name, pattern);
}

/// Null when the file has gone meanwhile. Links are not followed.
std::shared_ptr<CachedFile> describe(const std::filesystem::path& path) {
    struct stat attributes {};
    if (lstat(path.c_str(), &attributes) != 0) {
        return nullptr;
    }
    auto file = std::make_shared<CachedFile>();
    file->name = path.filename().string();
    file->bytes = S_ISREG(attributes.st_mode) ? static_cast<std::uintmax_t>(attributes.st_size) : 0;
    file->modified = Date(std::chrono::seconds(attributes.st_mtim.tv_sec) +
                          std::chrono::microseconds(attributes.st_mtim.tv_nsec / 1000));
    return file;
}

/// Newest first.
Files filesInCache() {
    const std::string path = videoDirectory();
    Files files;
    try {
        for (const auto& entry : std::filesystem::directory_iterator(path)) {
            if (isUnfinished(entry.path().filename().string())) {
                continue;
            }
            if (const auto file = describe(entry.path())) {
                files.push_back(file);
            }
        }
    } catch (const std::filesystem::filesystem_error& error) {
        throw Failure(ExitCode::Failed,
                      "cannot read the cache in " + path + ": " + error.code().message());
    }
    std::sort(files.begin(), files.end(),
              [](const auto& a, const auto& b) { return a->modified > b->modified; });
    return files;
}

Lines linesOfFiles(const Files& files) {
    Lines lines;
    std::uint64_t bytes = 0;
    for (const auto& file : files) {
        bytes += file->bytes;
        lines.push_back(rightAligned(ageText(Date::now() - file->modified), 8) + "  " +
                        rightAligned(sizeText(file->bytes), 8) + "  " + file->name);
    }
    lines.push_back(files.empty() ? "The cache is empty."
                                  : countText(files.size(), "file") + ", " + sizeText(bytes));
    return lines;
}

} // namespace

std::shared_ptr<FileManager> videoCache() {
    return FileManager::sharedGroupManager("/videos/");
}

std::string videoDirectory() {
    const auto path = videoCache()->documentsDirectory();
    if (!path) {
        throw Failure(ExitCode::Failed,
                      "there is no directory for the cache: neither XDG_DATA_HOME nor HOME is set");
    }
    return *path;
}

void listCache(const HostPointer& host, const Arguments& /*arguments*/) {
    host->output().writeAll(filesInCache(), linesOfFiles);
    host->end();
}

void trimCache(const HostPointer& host, const Arguments& arguments) {
    const auto count = static_cast<std::size_t>(arguments.number("N"));
    const std::size_t before = filesInCache().size();
    videoCache()->cleanDirectory(arguments.number("N"));
    const std::size_t left = filesInCache().size();
    if (left > count + 1) {
        throw Failure(ExitCode::Failed, "some files could not be removed from " + videoDirectory());
    }
    const std::size_t removed = before - std::min(before, left);
    host->show({{"removed", removed}, {"left", left}}, {"removed " + countText(removed, "file") +
                                                        ", " + countText(left, "file") + " left"});
}

void showCachePath(const HostPointer& host, const Arguments& /*arguments*/) {
    host->output().writePath("directory", videoDirectory());
    host->end();
}

} // namespace KeloHost
