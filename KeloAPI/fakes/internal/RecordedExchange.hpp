#pragma once

#include <KeloAPI/base/Error.hpp>
#include <KeloAPI/base/internal/Hash.hpp>
#include <KeloAPI/http/HeaderFields.hpp>
#include <KeloAPI/http/Method.hpp>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace KeloAPI::fakes {

/// What a cassette has of a body that is too long for it.
struct LongBody {
    std::size_t size = 0;
    std::uint64_t hash = stableHash({});

    friend bool operator==(const LongBody&, const LongBody&) = default;
};

struct RecordedBody {
    std::string bytes;
    /// In place of the bytes.
    std::optional<LongBody> tooLong;

    friend bool operator==(const RecordedBody&, const RecordedBody&) = default;
};

/// Gathers a body as long as it is short enough to be kept.
class BodyRecorder {
public:
    explicit BodyRecorder(std::size_t maxBytes)
        : _maxBytes(maxBytes) {}

    void append(std::string_view bytes) {
        _all.size += bytes.size();
        _all.hash = stableHash(bytes, _all.hash);
        if (_all.size <= _maxBytes) {
            _kept += bytes;
        } else {
            _kept = std::string(); // with its memory
        }
    }

    const std::string& bytes() const { return _kept; }
    /// Absent where `bytes` are all.
    std::optional<LongBody> tooLong() const {
        return _all.size > _maxBytes ? std::optional(_all) : std::nullopt;
    }
    std::size_t size() const { return _all.size; }

private:
    const std::size_t _maxBytes;
    LongBody _all;
    std::string _kept;
};

/// All without secrets.
struct RecordedRequest {
    Method method = Method::GET;
    std::string url;
    HeaderFields headerFields;
    RecordedBody body;
};

struct RecordedResponse {
    /// The request's, unless redirects led elsewhere.
    std::string url;
    int statusCode = 0;
    HeaderFields headerFields;
    /// Where it is not the length of the body.
    std::optional<std::int64_t> expectedContentLength;
    RecordedBody body;
};

struct RecordedExchange {
    RecordedRequest request;
    std::optional<RecordedResponse> response;
    std::optional<Error> error;
    /// False as long as it is under way.
    bool isOver = false;
};

} // namespace KeloAPI::fakes
