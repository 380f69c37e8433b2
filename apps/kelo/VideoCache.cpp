#include "VideoCache.hpp"

#include "Failure.hpp"
#include "Fields.hpp"

#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <regex>

namespace KeloHost {

using namespace KeloAPI;

Parameters fieldsOf(const CachedFile& file) {
    return {{"name", file.name}, {"bytes", file.bytes}, {"modified", valueOf(file.modified)}};
}

namespace VideoCache {

namespace {

/// Downloads that are still in the making have names of that kind, and no place in the cache yet.
bool isInTheMaking(const std::string& name) {
    static const std::regex pattern("\\.download-[0-9a-f]{32}\\.part");
    return std::regex_match(name, pattern);
}

/// Null when the file has gone meanwhile. Links are not followed.
std::shared_ptr<CachedFile> describe(const std::filesystem::path& path) {
    struct stat attributes {};
    if (lstat(path.c_str(), &attributes) != 0) {
        return nullptr;
    }
    const auto file = std::make_shared<CachedFile>();
    file->name = path.filename().string();
    file->bytes = S_ISREG(attributes.st_mode) ? static_cast<std::uintmax_t>(attributes.st_size) : 0;
    file->modified = Date(std::chrono::seconds(attributes.st_mtim.tv_sec) +
                          std::chrono::microseconds(attributes.st_mtim.tv_nsec / 1000));
    return file;
}

} // namespace

std::shared_ptr<FileManager> manager() {
    return FileManager::sharedGroupManager("/videos/");
}

std::string directory() {
    const auto path = manager()->documentsDirectory();
    if (!path) {
        throw Failure(ExitCode::Failed,
                      "there is no place for a cache: neither XDG_DATA_HOME nor HOME names one");
    }
    return *path;
}

std::vector<std::shared_ptr<CachedFile>> files() {
    const std::string path = directory();
    std::vector<std::shared_ptr<CachedFile>> files;
    try {
        for (const auto& entry : std::filesystem::directory_iterator(path)) {
            if (isInTheMaking(entry.path().filename().string())) {
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

void trim(std::int64_t count) {
    manager()->cleanDirectory(count);
    if (files().size() > static_cast<std::size_t>(count) + 1) {
        throw Failure(ExitCode::Failed, "some files could not be removed from " + directory());
    }
}

} // namespace VideoCache

} // namespace KeloHost
