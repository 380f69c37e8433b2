#pragma once

#include <KeloAPI/http/HeaderFields.hpp>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace KeloAPI {

/// Gathers the head of a response from its lines. Interim responses (1xx) and what follows the body
/// are passed over, but count for its length.
class ResponseHead {
public:
    enum class Progress : std::uint8_t {
        /// More lines are due, or the line means nothing here.
        Unfinished,
        /// This line finished the final response's head. Once.
        Finished,
        /// Longer than any head has reason to be.
        TooLong
    };

    explicit ResponseHead(std::size_t maxBytes)
        : _maxBytes(maxBytes) {}
    ResponseHead(const ResponseHead&) = delete;
    ResponseHead& operator=(const ResponseHead&) = delete;

    /// Takes one line, line end included.
    Progress take(std::string_view line);

    bool isFinished() const { return _finished; }
    int statusCode() const { return _statusCode; }
    /// Fields that came several times are joined by ", ".
    const HeaderFields& fields() const { return _fields; }
    /// The same, which are gone from here.
    HeaderFields takeFields() { return std::exchange(_fields, {}); }
    /// What was done to the body on its way, as Content-Encoding says.
    enum class ContentCoding : std::uint8_t { None, Gzip, Other };
    ContentCoding contentCoding() const;
    /// Whether the end of the body can be told: by chunks, or by a length of one number, be it
    /// named several times, or by the connection's end. libcurl takes the last of several lengths,
    /// and passes over codings that were not offered.
    bool hasSoundFraming() const;
    /// Whether only the end of an HTTP/1 connection ends the body, where there is one.
    bool endsWithConnection() const;
    /// The body's length in bytes as the observer will see it; -1 when the head does not tell.
    std::int64_t expectedContentLength() const;

private:
    void begin(std::string_view statusLine);
    void takeField(std::string_view line);

    const std::size_t _maxBytes;
    int _statusCode = 0;
    HeaderFields _fields;
    std::string* _lastValue = nullptr;
    std::size_t _size = 0;
    bool _finished = false;
};

} // namespace KeloAPI
