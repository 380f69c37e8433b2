#pragma once

#include <zlib.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>

namespace KeloAPI {

/// Unpacks a gzip body as it comes in. A body may be several gzip files in a row, as the format
/// allows.
class GzipDecoder {
public:
    /// Takes a run of unpacked bytes; false for no more.
    using Receiver = std::function<bool(std::string_view)>;
    enum class Result : std::uint8_t {
        Taken,
        /// The bytes are not gzip.
        Malformed,
        /// The receiver wants no more.
        Refused
    };

    GzipDecoder();
    GzipDecoder(const GzipDecoder&) = delete;
    GzipDecoder& operator=(const GzipDecoder&) = delete;
    ~GzipDecoder();

    /// Throws `std::bad_alloc` when memory runs out.
    Result take(std::string_view bytes, const Receiver& receiver);

    /// False in the midst of a gzip file. A body without a byte is complete.
    bool isComplete() const { return _complete; }

private:
    z_stream _stream{};
    std::array<char, std::size_t{16} << 10U> _unpacked{};
    bool _complete = true;
};

} // namespace KeloAPI
