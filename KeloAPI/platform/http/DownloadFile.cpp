#include <KeloAPI/platform/http/DownloadFile.hpp>
#include <KeloAPI/platform/http/HTTPError.hpp>

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <system_error>

namespace KeloAPI {

namespace {

// A transport hands out small runs; gathering them nearly doubles the speed of a large file.
constexpr std::size_t gathered = std::size_t{512} << 10U;

std::string directoryOf(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

/// A name that no other process and no other download has: 128 random bits.
std::string uniqueName() {
    constexpr std::string_view digits = "0123456789abcdef";
    std::array<unsigned char, 16> bytes{};
    std::string name;
    if (getentropy(bytes.data(), bytes.size()) != 0) {
        return name;
    }
    for (const unsigned char byte : bytes) {
        name += digits[byte >> 4U];
        name += digits[byte & 15U];
    }
    return name;
}

} // namespace

DownloadFile::DownloadFile(std::string destination)
    : _destination(std::move(destination))
    , _temporary(directoryOf(_destination) + ".download-" + uniqueName() + ".part") {
    // Opened by hand because the system's temporary files are private, and what this becomes is an
    // ordinary file: the process's mask cannot be read without changing it for all threads.
    _file = open(_temporary.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (_file < 0) {
        fail("no file can be made beside ");
    }
}

DownloadFile::~DownloadFile() {
    if (_file >= 0) {
        close(_file);
        unlink(_temporary.c_str());
    }
}

bool DownloadFile::append(std::string_view bytes) {
    if (_error) {
        return false;
    }
    _pending.append(bytes);
    return _pending.size() < gathered || flush();
}

bool DownloadFile::flush() {
    std::string_view rest = _pending;
    while (!rest.empty()) {
        const ssize_t written = write(_file, rest.data(), rest.size());
        if (written < 0 && errno != EINTR) {
            return fail("cannot write ");
        }
        rest.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
    }
    _pending.clear();
    return true;
}

bool DownloadFile::commit() {
    if (_error || !flush()) {
        return false;
    }
    if (fsync(_file) != 0) {
        return fail("cannot flush ");
    }
    if (std::rename(_temporary.c_str(), _destination.c_str()) != 0) {
        return fail("cannot put the download in the place of ");
    }
    close(_file);
    _file = -1;
    return true;
}

bool DownloadFile::fail(const char* what) {
    const std::error_code reason(errno, std::generic_category());
    _error = httpError(HTTPErrorCode::CannotWriteFile, what + _destination,
                       Error::withMessage("errno", reason.value(), reason.message()));
    return false;
}

} // namespace KeloAPI
