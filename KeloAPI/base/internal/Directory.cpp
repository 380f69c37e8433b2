#include <KeloAPI/base/internal/Directory.hpp>
#include <KeloAPI/base/internal/System.hpp>

#include <dirent.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

namespace KeloAPI {

namespace {

struct Closer {
    void operator()(DIR* directory) const { closedir(directory); }
};

[[noreturn]] void fail(const char* what, const std::string& path) {
    throw std::filesystem::filesystem_error(what, path,
                                            std::error_code(errno, std::generic_category()));
}

std::pair<std::int64_t, std::int64_t> modificationOf(const std::string& path) {
    struct stat attributes {};
    if (lstat(path.c_str(), &attributes) != 0) {
        fail("cannot examine", path);
    }
    return System::modificationTime(attributes);
}

} // namespace

std::vector<std::string> namesIn(const std::string& directory) {
    const std::unique_ptr<DIR, Closer> stream(opendir(directory.c_str()));
    if (!stream) {
        fail("cannot list", directory);
    }
    std::vector<std::string> names;
    errno = 0; // only so do the end and an error differ
    while (const dirent* entry = readdir(stream.get())) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") {
            names.emplace_back(name);
        }
        errno = 0;
    }
    if (errno != 0) {
        fail("cannot list", directory);
    }
    return names;
}

std::vector<DirectoryEntry> entriesOf(const std::string& directory,
                                      const std::function<bool(std::string_view name)>& wanted) {
    std::vector<DirectoryEntry> entries;
    std::string path = directory;
    for (std::string& name : namesIn(directory)) {
        if (wanted(name)) {
            path.resize(directory.size());
            path += name;
            entries.push_back({std::move(name), modificationOf(path)});
        }
    }
    return entries;
}

} // namespace KeloAPI
