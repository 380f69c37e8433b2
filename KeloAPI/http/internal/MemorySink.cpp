#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/http/internal/MemorySink.hpp>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <utility>

namespace KeloAPI {

namespace {

// The JSON reader looks this far behind a text; room for it saves a copy of the text.
constexpr std::size_t padding = 64;

// A length that the head promises is believed up to here; beyond, the body grows as it comes.
constexpr std::int64_t maxReserved = std::int64_t{16} << 20U;

constinit std::atomic<std::size_t> bytesTaken = 0;

} // namespace

bool BodyMemory::take(std::size_t bytes, std::size_t max) {
    std::size_t before = bytesTaken.load(std::memory_order_relaxed);
    do {
        if (before > max || bytes > max - before) {
            return false;
        }
    } while (!bytesTaken.compare_exchange_weak(before, before + bytes, std::memory_order_relaxed));
    return true;
}

void BodyMemory::giveBack(std::size_t bytes) {
    bytesTaken.fetch_sub(bytes, std::memory_order_relaxed);
}

MemorySink::~MemorySink() {
    BodyMemory::giveBack(_counted);
}

void MemorySink::begin(const HTTPResponse& head) {
    const auto expected = std::clamp<std::int64_t>(head.expectedContentLength, 0, maxReserved);
    _body.reserve(static_cast<std::size_t>(expected) + padding);
}

bool MemorySink::take(std::string_view bytes) {
    if (bytes.size() > _maxBytes - std::min(_maxBytes, _body.size())) {
        _refusal = httpError(HTTPErrorCode::BodyTooLarge, "the response is too large");
        return false;
    }
    if (!BodyMemory::take(bytes.size(), _maxBytesInProcess)) {
        _refusal = httpError(HTTPErrorCode::OutOfResources, "too many large responses at a time");
        return false;
    }
    _counted += bytes.size();
    _body.append(bytes);
    return true;
}

std::optional<Error> MemorySink::finish(std::optional<Error> error) {
    if (_refusal) {
        error = _refusal;
    }
    if (error) {
        // Nobody reads a part of a response; others need the room.
        std::string().swap(_body);
        BodyMemory::giveBack(std::exchange(_counted, 0));
    }
    _body.reserve(_body.size() + padding);
    return error;
}

} // namespace KeloAPI
