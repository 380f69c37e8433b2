#include <KeloAPI/http/HTTPError.hpp>

namespace KeloAPI {

Error httpError(HTTPErrorCode code, std::string message, std::optional<Error> underlying) {
    return Error::withMessage(HTTPErrorDomain, static_cast<std::int64_t>(code), std::move(message),
                              std::move(underlying));
}

bool isHTTPError(const Error& error, HTTPErrorCode code) {
    return error.domain() == HTTPErrorDomain && error.code() == static_cast<std::int64_t>(code);
}

} // namespace KeloAPI
