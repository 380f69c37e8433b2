#pragma once

#include "Failure.hpp"

#include <KeloAPI/KeloAPI.hpp>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <utility>

namespace KeloHost {

/// A file that is read in segments of one size; the last one may be shorter. Never held as a whole.
class SegmentedFile {
public:
    /// Throws a `Failure` for anything but a readable file, and for an empty one.
    SegmentedFile(std::string path, std::int64_t segmentSize)
        : _path(std::move(path))
        , _segmentSize(segmentSize) {
        // Opening a pipe would wait for its writer.
        _descriptor = ::open(_path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        if (_descriptor < 0) {
            throw Failure(ExitCode::Usage, "cannot read " + _path + ": " + std::strerror(errno));
        }
        struct stat status {};
        const char* problem = ::fstat(_descriptor, &status) != 0 ? std::strerror(errno)
                              : !S_ISREG(status.st_mode)         ? "it is not a file"
                              : status.st_size == 0              ? "it is empty"
                                                                 : nullptr;
        if (problem != nullptr) {
            ::close(_descriptor);
            throw Failure(ExitCode::Usage, "cannot upload " + _path + ": " + problem);
        }
        _size = status.st_size;
    }
    SegmentedFile(const SegmentedFile&) = delete;
    SegmentedFile& operator=(const SegmentedFile&) = delete;
    ~SegmentedFile() { ::close(_descriptor); }

    std::int64_t size() const { return _size; }
    std::int64_t segments() const { return (_size + _segmentSize - 1) / _segmentSize; }
    std::int64_t sizeOf(std::int64_t segment) const {
        return std::min(_segmentSize, _size - segment * _segmentSize);
    }

    /// The segment's bytes in a buffer of their own, which goes with the last copy. Throws a
    /// `Failure` when the file does not have them any more.
    KeloAPI::Data read(std::int64_t segment) const {
        const auto size = static_cast<std::size_t>(sizeOf(segment));
        const std::int64_t start = segment * _segmentSize;
        std::shared_ptr<std::byte[]> bytes(
            new std::byte[size]); // not cleared: it is filled at once
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

private:
    const std::string _path;
    const std::int64_t _segmentSize;
    std::int64_t _size = 0;
    int _descriptor = -1;
};

} // namespace KeloHost
