#pragma once

#include <KeloAPI/base/Error.hpp>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace KeloAPI {

/// A file in the making: written under a temporary name beside its destination, which it replaces
/// in one step when it is complete. Without `commit` the destination stays as it was and the
/// temporary file goes.
class DownloadFile {
public:
    /// Opens the temporary file; what fails is told by `error`.
    explicit DownloadFile(std::string destination);
    DownloadFile(const DownloadFile&) = delete;
    DownloadFile& operator=(const DownloadFile&) = delete;
    ~DownloadFile();

    /// False once something has failed.
    bool append(std::string_view bytes);

    /// Flushes to the disk and takes the destination's place. False when something failed.
    bool commit();

    /// What failed first; absent while nothing has.
    const std::optional<Error>& error() const { return _error; }

private:
    bool flush();
    bool write(std::string_view bytes);
    bool fail(const char* what);

    std::string _destination;
    std::string _temporary;
    std::string _pending;
    std::size_t _written = 0;
    int _file = -1;
    std::optional<Error> _error;
};

} // namespace KeloAPI
