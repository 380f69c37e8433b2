#include <KeloAPI/curl/internal/GzipDecoder.hpp>

#include <new>

namespace KeloAPI {

namespace {

/// The largest window, and a gzip header and trailer around the data.
constexpr int gzipOnly = MAX_WBITS + 16;

} // namespace

GzipDecoder::GzipDecoder() {
    if (inflateInit2(&_stream, gzipOnly) != Z_OK) {
        throw std::bad_alloc();
    }
}

GzipDecoder::~GzipDecoder() {
    inflateEnd(&_stream);
}

GzipDecoder::Result GzipDecoder::take(std::string_view bytes, const Receiver& receiver) {
    _stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
    _stream.avail_in = static_cast<uInt>(bytes.size());
    bool more = !bytes.empty();
    while (more) {
        if (_complete) {
            inflateReset(&_stream);
        }
        _stream.next_out = reinterpret_cast<Bytef*>(_unpacked.data());
        _stream.avail_out = static_cast<uInt>(_unpacked.size());
        const int result = inflate(&_stream, Z_NO_FLUSH);
        if (result == Z_MEM_ERROR) {
            throw std::bad_alloc();
        }
        if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR) {
            return Result::Malformed;
        }
        _complete = result == Z_STREAM_END;
        const std::size_t size = _unpacked.size() - _stream.avail_out;
        if (size > 0 && !receiver({_unpacked.data(), size})) {
            return Result::Refused;
        }
        more = _stream.avail_in > 0 || (!_complete && _stream.avail_out == 0);
    }
    return Result::Taken;
}

} // namespace KeloAPI
