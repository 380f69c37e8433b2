#pragma once

#include <KeloAPI/base/Data.hpp>

#include <cstdint>
#include <string>

namespace KeloHost {

/// A file that is read in segments of one size; the last one may be shorter. Never held as a whole.
class SegmentedFile {
public:
    /// Throws a `Failure` for what is no file that can be read, and for an empty one.
    SegmentedFile(std::string path, std::int64_t segmentSize);
    ~SegmentedFile();
    SegmentedFile(const SegmentedFile&) = delete;
    SegmentedFile& operator=(const SegmentedFile&) = delete;

    const std::string& path() const { return _path; }
    std::int64_t size() const { return _size; }
    std::int64_t segments() const { return (_size + _segmentSize - 1) / _segmentSize; }
    std::int64_t sizeOf(std::int64_t segment) const;
    /// The segment's bytes in a buffer of their own, which goes with the last copy. Throws a
    /// `Failure` when the file does not have them any more.
    KeloAPI::Data read(std::int64_t segment) const;

private:
    std::string _path;
    std::int64_t _segmentSize;
    std::int64_t _size = 0;
    int _descriptor = -1;
};

} // namespace KeloHost
