#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/http/internal/FileSink.hpp>

namespace KeloAPI {

namespace {

Error statusError(int status) {
    Error::UserInfo info;
    info.emplace(NSLocalizedDescriptionKey,
                 "the server responded with status " + std::to_string(status));
    info.emplace(HTTPStatusCodeKey, Number::of(status));
    return {HTTPErrorDomain, static_cast<std::int64_t>(HTTPErrorCode::HTTPStatus), std::move(info)};
}

} // namespace

/// 204 and 205 have no body, and a part that nobody asked for is not the file.
bool FileSink::isWhole(int status) const {
    return status >= 200 && status < 300 && status != 204 && status != 205 &&
           (status != 206 || _partAllowed);
}

void FileSink::begin(const HTTPResponse& head) {
    _begun = true;
    if (!isWhole(head.statusCode)) {
        _refusal = statusError(head.statusCode);
        return;
    }
    const URL destination = _destination(head);
    if (const auto path = destination.filePath()) {
        _file.emplace(*path);
    } else {
        _refusal = httpError(HTTPErrorCode::CannotWriteFile,
                             destination.absoluteString() + " is not a file URL");
    }
}

bool FileSink::take(std::string_view bytes) {
    return !_refusal && _file->append(bytes);
}

std::optional<Error> FileSink::finish(std::optional<Error> error) {
    if (!error && !_begun) {
        error = httpError(HTTPErrorCode::BadServerResponse, "there was no response");
    }
    if (!error && _file) {
        _file->commit();
    }
    if (!_refusal && _file && _file->error()) {
        _refusal = _file->error();
    }
    _file.reset();
    _destination = nullptr; // what it captured goes
    return _refusal ? _refusal : error;
}

} // namespace KeloAPI
