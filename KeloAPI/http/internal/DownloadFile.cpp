#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/http/internal/AbandonedDownloads.hpp>
#include <KeloAPI/http/internal/DownloadFile.hpp>

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace KeloAPI {

namespace {

// A transport hands out runs of every size; written in whole blocks they cost less. A small file's
// are small: they stay in the processor's cache, and its last one is soon written.
constexpr std::size_t smallBlock = std::size_t{64} << 10U;
constexpr std::size_t largeBlock = std::size_t{512} << 10U;

std::string directoryOf(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

} // namespace

DownloadFile::DownloadFile(std::string destination)
    : _destination(std::move(destination))
    , _temporary(directoryOf(_destination) + AbandonedDownloads::temporaryName()) {
    _pending.reserve(smallBlock);
    AbandonedDownloads::clearOnce(directoryOf(_destination));
    _file = AbandonedDownloads::create(_temporary);
    if (_file < 0) {
        fail("no file can be made beside ");
    }
}

DownloadFile::~DownloadFile() {
    if (_file >= 0) {
        // The lock goes last: nobody may take the file for abandoned meanwhile.
        unlink(_temporary.c_str());
        close(_file);
    }
}

bool DownloadFile::append(std::string_view bytes) {
    while (!_error && !bytes.empty()) {
        const std::size_t block = _written < largeBlock ? smallBlock : largeBlock;
        const std::string_view taken = bytes.substr(0, block - _pending.size());
        _pending.append(taken);
        bytes.remove_prefix(taken.size());
        if (_pending.size() == block) {
            flush();
        }
    }
    return !_error;
}

bool DownloadFile::flush() {
    const bool written = write(_pending);
    _pending.clear();
    return written;
}

bool DownloadFile::write(std::string_view bytes) {
    _written += bytes.size();
    while (!bytes.empty()) {
        const ssize_t written = ::write(_file, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) {
            return fail("cannot write ");
        }
        bytes.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
    }
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
