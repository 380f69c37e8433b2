#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/http/internal/BodyMemory.hpp>
#include <KeloAPI/http/internal/MemoryRequest.hpp>

#include <algorithm>
#include <utility>

namespace KeloAPI {

namespace {

// The JSON reader looks this far behind a text; room for it saves a copy of the text.
constexpr std::size_t padding = 64;

// A length that the head promises is believed up to here; beyond, the body grows as it comes.
constexpr std::int64_t mostReserved = std::int64_t{16} << 20U;

} // namespace

MemoryRequest::~MemoryRequest() {
    BodyMemory::giveBack(_counted);
}

void MemoryRequest::receiveResponse(const HTTPResponse& response) {
    const auto expected = std::clamp<std::int64_t>(response.expectedContentLength, 0, mostReserved);
    body().reserve(static_cast<std::size_t>(expected) + padding);
}

bool MemoryRequest::receiveData(std::string_view bytes) {
    if (bytes.size() > BodyMemory::mostOfOne - body().size()) {
        _refusal = httpError(HTTPErrorCode::BodyTooLarge, "the answer is too large");
        return false;
    }
    if (!BodyMemory::take(bytes.size())) {
        _refusal = httpError(HTTPErrorCode::OutOfResources, "too many large answers at a time");
        return false;
    }
    _counted += bytes.size();
    body().append(bytes);
    if (_reports == Reports::BytesReceived) {
        reportProgress(static_cast<std::int64_t>(body().size()), head()->expectedContentLength);
    }
    return true;
}

void MemoryRequest::bodySent(std::int64_t sent, std::int64_t total) {
    if (_reports == Reports::BytesSent) {
        reportProgress(sent, total);
    }
}

std::optional<Error> MemoryRequest::finish(std::optional<Error> error) {
    if (_refusal) {
        error = _refusal;
    }
    if (error) {
        // Nobody reads a part of an answer; others need the room.
        std::string().swap(body());
        BodyMemory::giveBack(std::exchange(_counted, 0));
    }
    if (body().capacity() - body().size() < padding) {
        body().reserve(body().size() + padding);
    }
    return error;
}

} // namespace KeloAPI
