#include <KeloAPI/base/internal/Directory.hpp>
#include <KeloAPI/base/internal/NeverDestroyed.hpp>
#include <KeloAPI/base/internal/System.hpp>
#include <KeloAPI/http/internal/AbandonedDownloads.hpp>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <mutex>
#include <set>

namespace KeloAPI::AbandonedDownloads {

namespace {

constexpr std::string_view prefix = ".download-";
constexpr std::string_view suffix = ".part";
constexpr std::string_view digits = "0123456789abcdef";
constexpr std::size_t randomBytes = 16;
/// A folder is cleared when a process starts and when it is trimmed: this many times in a row is
/// not an accident.
constexpr int maxAttempts = 100;

struct Cleared {
    std::mutex mutex;
    std::set<std::string> directories;
};

Cleared& cleared() {
    static NeverDestroyed<Cleared> instance;
    return *instance;
}

} // namespace

std::string temporaryName() {
    std::array<unsigned char, randomBytes> bytes{};
    // Without random bytes the name is taken once, and another download is refused.
    static_cast<void>(System::fillWithRandom(bytes));
    std::string name(prefix);
    for (const unsigned char byte : bytes) {
        name += digits[byte >> 4U];
        name += digits[byte & 15U];
    }
    return name.append(suffix);
}

bool isTemporaryName(std::string_view name) {
    if (name.size() != prefix.size() + 2 * randomBytes + suffix.size() ||
        !name.starts_with(prefix) || !name.ends_with(suffix)) {
        return false;
    }
    const auto middle = name.substr(prefix.size(), 2 * randomBytes);
    return middle.find_first_not_of(digits) == std::string_view::npos;
}

int create(const std::string& path) {
    // Opened by hand because the system's temporary files are private, and what this becomes is an
    // ordinary file: the process's mask cannot be read without changing it for all threads.
    constexpr int flags = O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC;
    for (int attempt = 0; attempt < maxAttempts; ++attempt) {
        const int file = open(path.c_str(), flags, 0666);
        if (file < 0) {
            return file;
        }
        // A file system without locks does without them: nothing is cleared there either.
        while (flock(file, LOCK_EX) != 0 && errno == EINTR) {
        }
        struct stat status {};
        if (fstat(file, &status) == 0 && status.st_nlink > 0) {
            return file;
        }
        // Another process took it for abandoned before it was locked.
        close(file);
    }
    errno = ESTALE;
    return -1;
}

void removeIfAbandoned(const std::string& path) {
    // To write as well, because a network's file system locks nothing else exclusively.
    const int file = open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (file < 0) {
        return;
    }
    if (flock(file, LOCK_EX | LOCK_NB) == 0) {
        unlink(path.c_str());
    }
    close(file);
}

bool clear(const std::string& directory) {
    const std::string place = directory.empty() ? "./" : directory + "/";
    try {
        for (const std::string& name : namesIn(place)) {
            if (isTemporaryName(name)) {
                removeIfAbandoned(place + name);
            }
        }
        return true;
    } catch (const std::filesystem::filesystem_error&) {
        return false;
    }
}

void clearOnce(const std::string& directory) {
    const std::lock_guard lock(cleared().mutex);
    if (!cleared().directories.contains(directory) && clear(directory)) {
        cleared().directories.insert(directory);
    }
}

} // namespace KeloAPI::AbandonedDownloads
