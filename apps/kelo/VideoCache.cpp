#include "VideoCache.hpp"

#include "Failure.hpp"

#include <algorithm>
#include <chrono>
#include <filesystem>

namespace KeloHost::VideoCache {

using namespace KeloAPI;

namespace {

/// Downloads that are still in the making have names of that kind, and no place in the cache yet.
bool isInTheMaking(const std::string& name) {
    return name.starts_with(".download-");
}

CachedFile describe(const std::filesystem::directory_entry& entry) {
    CachedFile file;
    file.name = entry.path().filename().string();
    file.bytes = entry.is_regular_file() ? entry.file_size() : 0;
    file.modified = std::chrono::floor<Date::duration>(
        std::chrono::file_clock::to_sys(entry.last_write_time()));
    return file;
}

} // namespace

std::shared_ptr<FileManager> manager() {
    return FileManager::sharedGroupManager("/videos/");
}

std::string directory() {
    const auto& path = manager()->documentsDirectory();
    if (!path) {
        throw Failure(ExitCode::Failed,
                      "there is no place for a cache: neither XDG_DATA_HOME nor HOME names one");
    }
    return *path;
}

std::vector<CachedFile> files() {
    const std::string path = directory();
    std::vector<CachedFile> files;
    try {
        for (const auto& entry : std::filesystem::directory_iterator(path)) {
            if (!isInTheMaking(entry.path().filename().string())) {
                files.push_back(describe(entry));
            }
        }
    } catch (const std::filesystem::filesystem_error& error) {
        throw Failure(ExitCode::Failed,
                      "cannot read the cache in " + path + ": " + error.code().message());
    }
    std::sort(files.begin(), files.end(),
              [](const CachedFile& a, const CachedFile& b) { return a.modified > b.modified; });
    return files;
}

void trim(std::int64_t count) {
    manager()->cleanDirectory(count);
    if (files().size() > static_cast<std::size_t>(count) + 1) {
        throw Failure(ExitCode::Failed, "some files could not be removed from " + directory());
    }
}

} // namespace KeloHost::VideoCache
