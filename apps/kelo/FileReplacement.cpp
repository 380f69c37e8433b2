#include "FileReplacement.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace KeloHost {

namespace {

/// Writes a file that is not there yet.
int writeNew(const std::string& path, std::string_view bytes, mode_t mode) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (file < 0) {
        return errno;
    }
    int problem = 0;
    while (!bytes.empty() && problem == 0) {
        const ssize_t written = ::write(file, bytes.data(), bytes.size());
        if (written >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            problem = errno;
        }
    }
    if (problem == 0 && ::fsync(file) != 0) {
        problem = errno;
    }
    ::close(file);
    if (problem != 0) {
        ::unlink(path.c_str());
    }
    return problem;
}

} // namespace

int replaceFile(const std::string& path, std::string_view bytes, mode_t mode) {
    const std::string beside = path + "." + std::to_string(::getpid()) + ".part";
    if (const int problem = writeNew(beside, bytes, mode); problem != 0) {
        return problem;
    }
    if (std::rename(beside.c_str(), path.c_str()) != 0) {
        const int problem = errno;
        ::unlink(beside.c_str());
        return problem;
    }
    return 0;
}

} // namespace KeloHost
