#include "service/media/PngWriter.hpp"

#include "service/media/BigEndian.hpp"

#include <zlib.h>

#include <stdexcept>
#include <string_view>

namespace KeloService {
namespace {

const Bytef* zlibBytes(std::string_view text) {
    return reinterpret_cast<const Bytef*>(text.data());
}

std::string chunk(const std::string& kind, const std::string& content) {
    const std::string checked = kind + content;
    const auto sum = crc32(0, zlibBytes(checked), static_cast<uInt>(checked.size()));
    return bigEndian(content.size(), 4) + checked + bigEndian(sum, 4);
}

std::string deflated(const std::string& bytes) {
    uLongf size = compressBound(bytes.size());
    std::string packed(size, '\0');
    if (compress2(reinterpret_cast<Bytef*>(packed.data()), &size, zlibBytes(bytes), bytes.size(),
                  Z_DEFAULT_COMPRESSION) != Z_OK) {
        throw std::runtime_error("zlib cannot compress an image");
    }
    packed.resize(size);
    return packed;
}

} // namespace

std::string pngFile(int side, const std::string& pixels) {
    const std::size_t rowBytes = static_cast<std::size_t>(side) * 3;
    std::string rows;
    for (std::size_t start = 0; start < pixels.size(); start += rowBytes) {
        rows += '\0'; // the row is stored without a filter
        rows.append(pixels, start, rowBytes);
    }
    const std::string size = bigEndian(static_cast<std::uint64_t>(side), 4);
    // Eight bits for each of three colours; the three methods that exist.
    const std::string shape{8, 2, 0, 0, 0};
    return "\x89PNG\r\n\x1A\n" + chunk("IHDR", size + size + shape) +
           chunk("IDAT", deflated(rows)) + chunk("IEND", "");
}

} // namespace KeloService
