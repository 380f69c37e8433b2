#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace KeloService {

/// A box of an MP4 file: its length, its four-letter kind, and what is in it.
inline std::string box(std::string_view kind, std::string_view content) {
    const std::size_t size = 8 + content.size();
    std::string text;
    for (const int shift : {24, 16, 8, 0}) {
        text += static_cast<char>(size >> shift & 0xFF);
    }
    return text.append(kind).append(content);
}

/// The number in these bytes, the highest first: how MP4 and PNG files store every number.
inline std::uint64_t bigEndian(std::string_view bytes) {
    std::uint64_t number = 0;
    for (const char byte : bytes) {
        number = number << 8 | static_cast<unsigned char>(byte);
    }
    return number;
}

/// Whether a file of this length is an MP4 by its outermost boxes: "ftyp" comes first, "moov" and
/// "mdat" are there, and the boxes fill the file exactly. `read` gives up to so many bytes from
/// there on.
bool isMp4(std::int64_t bytes,
           const std::function<std::string(std::int64_t offset, std::size_t count)>& read);

} // namespace KeloService
