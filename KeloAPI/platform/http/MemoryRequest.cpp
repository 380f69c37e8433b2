#include <KeloAPI/platform/http/HTTPError.hpp>
#include <KeloAPI/platform/http/MemoryRequest.hpp>

#include <algorithm>
#include <utility>

namespace KeloAPI {

namespace {

// The JSON reader looks this far behind a text; room for it saves a copy of the text.
constexpr std::size_t padding = 64;

// A length that the head promises is believed up to here; beyond, the body grows as it comes.
constexpr std::int64_t mostReserved = std::int64_t{16} << 20U;

// No answer of the service comes near it; a body that does is an accident or an attack.
constexpr std::size_t mostKept = std::size_t{256} << 20U;

} // namespace

void MemoryRequest::receiveResponse(const HTTPResponse& response) {
    const auto expected = std::clamp<std::int64_t>(response.expectedContentLength, 0, mostReserved);
    body().reserve(static_cast<std::size_t>(expected) + padding);
}

bool MemoryRequest::receiveData(std::string_view bytes) {
    if (bytes.size() > mostKept - body().size()) {
        _tooLarge = true;
        return false;
    }
    body().append(bytes);
    if (_reports == Reports::BytesReceived) {
        reportProgress(static_cast<std::int64_t>(body().size()), head()->expectedContentLength);
    }
    return true;
}

void MemoryRequest::bodySent(std::int64_t sent, std::int64_t total) {
    // A body that is sent again, after a redirect or on another connection, begins anew; the
    // progress waits until it is where it was.
    if (_reports == Reports::BytesSent && sent > _sent) {
        _sent = sent;
        reportProgress(sent, total);
    }
}

std::optional<Error> MemoryRequest::finish(std::optional<Error> error) {
    if (_tooLarge) {
        return httpError(HTTPErrorCode::BodyTooLarge, "the answer is too large", std::move(error));
    }
    if (body().capacity() - body().size() < padding) {
        body().reserve(body().size() + padding);
    }
    return error;
}

} // namespace KeloAPI
