#include "SegmentedFile.hpp"

#include "Failure.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>

namespace KeloHost {

SegmentedFile::SegmentedFile(std::string path, std::int64_t segmentSize)
    : _path(std::move(path))
    , _segmentSize(segmentSize) {
    // Opening a pipe would wait for its writer.
    _descriptor = ::open(_path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (_descriptor < 0) {
        throw Failure(ExitCode::Usage, "cannot read " + _path + ": " + std::strerror(errno));
    }
    struct stat status {};
    const std::string problem = ::fstat(_descriptor, &status) != 0 ? std::strerror(errno)
                                : !S_ISREG(status.st_mode)         ? "it is no file"
                                : status.st_size == 0              ? "it is empty"
                                                                   : "";
    if (!problem.empty()) {
        ::close(_descriptor);
        throw Failure(ExitCode::Usage, "cannot upload " + _path + ": " + problem);
    }
    _size = status.st_size;
}

SegmentedFile::~SegmentedFile() {
    ::close(_descriptor);
}

std::int64_t SegmentedFile::sizeOf(std::int64_t segment) const {
    return std::min(_segmentSize, _size - segment * _segmentSize);
}

KeloAPI::Data SegmentedFile::read(std::int64_t segment) const {
    const auto size = static_cast<std::size_t>(sizeOf(segment));
    const std::int64_t start = segment * _segmentSize;
    std::shared_ptr<std::byte[]> bytes(new std::byte[size]); // not cleared: it is filled at once
    for (std::size_t done = 0; done < size;) {
        const ssize_t got = ::pread(_descriptor, bytes.get() + done, size - done,
                                    start + static_cast<std::int64_t>(done));
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            throw Failure(ExitCode::Failed,
                          got == 0 ? _path + " became shorter while it was uploaded"
                                   : "cannot read " + _path + ": " + std::strerror(errno));
        }
        done += static_cast<std::size_t>(got);
    }
    const std::span<const std::byte> span(bytes.get(), size);
    return {std::move(bytes), span};
}

} // namespace KeloHost
