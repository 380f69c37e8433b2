#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/http/internal/DownloadRequest.hpp>

namespace KeloAPI {

namespace {

Error statusError(int status) {
    Error::UserInfo info;
    info.emplace(NSLocalizedDescriptionKey,
                 "the server answered with status " + std::to_string(status));
    info.emplace(HTTPStatusCodeKey, Number::of(status));
    return {HTTPErrorDomain, static_cast<std::int64_t>(HTTPErrorCode::HTTPStatus), std::move(info)};
}

/// True for an answer that is all that was asked for. 204 and 205 have no body, and a part that
/// nobody asked for is not the file.
bool isWhole(int status, const HeaderFields& asked) {
    const bool partial = status == 206 && !asked.contains("Range");
    return status >= 200 && status < 300 && status != 204 && status != 205 && !partial;
}

} // namespace

void DownloadRequest::requestSent() {
    if (const auto* place = std::get_if<URL>(&_destination)) {
        open(*place);
    }
}

void DownloadRequest::receiveResponse(const HTTPResponse& response) {
    if (!isWhole(response.statusCode, request().headerFields)) {
        _refusal = statusError(response.statusCode);
        _file.reset();
        return;
    }
    if (_file && _file->error()) {
        _file.reset(); // what failed before the answer may succeed with it
    }
    if (const auto* place = std::get_if<URL>(&_destination)) {
        open(*place);
    } else {
        open(std::get<Manager::Destination>(_destination)(response));
    }
}

/// Makes the file, unless that has been tried.
void DownloadRequest::open(const URL& destination) {
    if (_file || _refusal) {
        return;
    }
    const auto path = destination.filePath();
    if (!path) {
        _refusal = httpError(HTTPErrorCode::CannotWriteFile,
                             destination.absoluteString() + " is no file URL");
        return;
    }
    _file.emplace(*path);
}

bool DownloadRequest::receiveData(std::string_view bytes) {
    if (_refusal) {
        return false;
    }
    _received += static_cast<std::int64_t>(bytes.size());
    reportProgress(_received, head()->expectedContentLength);
    return _file->append(bytes);
}

std::optional<Error> DownloadRequest::finish(std::optional<Error> error) {
    if (!error && !head()) {
        error = httpError(HTTPErrorCode::BadServerResponse, "there was no answer");
    }
    if (!error && !_refusal && _file) {
        _file->commit();
    }
    if (!_refusal && _file && _file->error()) {
        _refusal = _file->error();
    }
    _file.reset();
    _destination = Manager::Destination(); // what it captured goes
    return _refusal && head() ? _refusal : error;
}

} // namespace KeloAPI
