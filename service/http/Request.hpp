#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace KeloService {

/// The text as an integer; absent when it is anything else.
template <typename Integer>
std::optional<Integer> parseNumber(std::string_view text) {
    Integer value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isWhole = error == std::errc() && end == text.data() + text.size();
    return isWhole ? std::optional(value) : std::nullopt;
}

/// One HTTP request as it stood on the wire, with its target taken apart.
struct Request {
    std::string method;
    /// Path and query exactly as sent.
    std::string target;
    /// In order of arrival, names as sent.
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;
    /// First and last byte of each range of a file that is wanted, -1 where it is open.
    std::vector<std::pair<std::int64_t, std::int64_t>> ranges;
    /// Number of the connection that carried it, from 1.
    std::uint64_t connection = 0;

    std::string_view path() const;
    /// Without the question mark; empty when there is none.
    std::string_view rawQuery() const;
    /// The first header of that name, whatever its case.
    std::optional<std::string> header(std::string_view name) const;
    /// The first query parameter of that name, decoded.
    std::optional<std::string> parameter(std::string_view name) const;
    /// The path's segments, decoded: "/users/me" has two.
    std::vector<std::string> segments() const;
    /// Whether it concerns the stand-in itself rather than the service it stands in for.
    bool isControl() const;
};

/// Reads method, target and headers of a request's head (up to and including the blank line).
Request parseHead(std::string_view head);

/// The body of a request whose route takes it as it arrives; never held as a whole.
class RequestBody {
public:
    /// Takes the next bytes; false to hear of no more.
    using Take = std::function<bool(std::string_view bytes)>;
    using Source = std::function<bool(const Take& take)>;

    /// No body at all.
    RequestBody() = default;
    /// `source` gives the bytes to the taker, and false when they broke off.
    explicit RequestBody(Source source)
        : source_(std::move(source)) {}

    /// Gives the whole body to `take`. False when the client left before its end, or `take` gave
    /// up. Only the first call gives anything.
    bool read(const Take& take);

private:
    Source source_;
};

/// Keeps the bytes of one request as they arrive, and knows where its body ends. The HTTP engine
/// would read a request that announces no body until the connection's end; `mayRead` stops it.
class RequestRecorder {
public:
    /// Bodies are kept up to this size; beyond it only their length is counted.
    static constexpr std::size_t keptBodyBytes = std::size_t{1} << 20;

    /// How many of the wanted bytes belong to this request.
    std::size_t mayRead(std::size_t wanted) const;
    void record(std::string_view bytes);

    const std::string& head() const { return head_; }
    /// The body's bytes on the wire (with chunk framing, if the client used it).
    const std::string& body() const { return body_; }
    std::uint64_t bodyBytes() const { return bodyBytes_; }
    bool isChunked() const { return chunked_; }

private:
    std::string head_;
    bool headComplete_ = false;
    std::string body_;
    std::uint64_t bodyBytes_ = 0;
    std::uint64_t announcedBytes_ = 0;
    bool chunked_ = false;
};

} // namespace KeloService
