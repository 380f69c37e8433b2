#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace KeloService {

/// Keeps the bytes of one request as they arrive, and knows where its body ends. The HTTP engine
/// would read a request that announces no body until the connection's end; `mayRead` stops it.
class RequestRecorder {
public:
    /// Bodies are kept up to this size; beyond it only their length is counted.
    static constexpr std::size_t keptBodyBytes = std::size_t{1} << 20;

    void startRequest();
    /// How many of the wanted bytes belong to this request.
    std::size_t mayRead(std::size_t wanted) const;
    void record(std::string_view bytes);

    bool headIsComplete() const { return headComplete_; }
    bool isEmpty() const { return head_.empty(); }
    const std::string& head() const { return head_; }
    /// The body's bytes on the wire (with chunk framing, if the client used it).
    const std::string& body() const { return body_; }
    std::uint64_t bodyBytes() const { return bodyBytes_; }
    bool isChunked() const { return chunked_; }

private:
    void finishHead();

    std::string head_;
    bool headComplete_ = false;
    std::string body_;
    std::uint64_t bodyBytes_ = 0;
    std::uint64_t announcedBytes_ = 0;
    bool chunked_ = false;
};

} // namespace KeloService
