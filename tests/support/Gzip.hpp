#pragma once

#include <zlib.h>

#include <string>

namespace KeloAPI::testing {

/// The text as gzip packs it best. The program that uses it links zlib.
inline std::string gzip(const std::string& text) {
    z_stream stream{};
    deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
    std::string packed(deflateBound(&stream, text.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    deflate(&stream, Z_FINISH);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

/// A response with this body, packed as its head says.
inline std::string packedResponse(const std::string& body, const std::string& encoding = "gzip") {
    return "HTTP/1.1 200 OK\r\nContent-Encoding: " + encoding +
           "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

} // namespace KeloAPI::testing
