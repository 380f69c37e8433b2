#include <KeloAPI/platform/Directory.hpp>

#include <dirent.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <memory>
#include <system_error>

namespace KeloAPI {

namespace {

struct Closer {
    void operator()(DIR* directory) const { closedir(directory); }
};

[[noreturn]] void fail(const char* what, const std::string& path) {
    throw std::filesystem::filesystem_error(what, path,
                                            std::error_code(errno, std::generic_category()));
}

std::int64_t modificationOf(const std::string& path) {
    struct stat attributes {};
    if (lstat(path.c_str(), &attributes) != 0) {
        fail("cannot examine", path);
    }
    return attributes.st_mtim.tv_sec * std::int64_t{1'000'000'000} + attributes.st_mtim.tv_nsec;
}

} // namespace

std::vector<DirectoryEntry> entriesOf(const std::string& directory,
                                      const std::function<bool(std::string_view name)>& wanted) {
    const std::unique_ptr<DIR, Closer> stream(opendir(directory.c_str()));
    if (!stream) {
        fail("cannot list", directory);
    }
    std::vector<DirectoryEntry> entries;
    std::string path = directory;
    while (true) {
        errno = 0;
        // Safe on any thread: the stream is this call's own.
        const dirent* entry = readdir(stream.get());
        if (entry == nullptr) {
            break;
        }
        const std::string_view name = entry->d_name;
        if (name != "." && name != ".." && wanted(name)) {
            path.resize(directory.size());
            path += name;
            entries.push_back({std::string(name), modificationOf(path)});
        }
    }
    if (errno != 0) {
        fail("cannot list", directory);
    }
    return entries;
}

} // namespace KeloAPI
