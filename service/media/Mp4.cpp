#include "service/media/Mp4.hpp"

#include <optional>
#include <set>

namespace KeloService {
namespace {

using Read = std::function<std::string(std::int64_t offset, std::size_t count)>;

/// More than any real file has; ends the walk through a hostile one.
constexpr int mostBoxes = 10000;
constexpr std::int64_t shortHead = 8;
constexpr std::int64_t longHead = 16;

/// Exactly so many bytes; empty when the file has fewer. They may lie in several pieces.
std::string readAll(const Read& read, std::int64_t offset, std::size_t count) {
    std::string bytes;
    while (bytes.size() < count) {
        const std::string piece =
            read(offset + static_cast<std::int64_t>(bytes.size()), count - bytes.size());
        if (piece.empty()) {
            return {};
        }
        bytes += piece;
    }
    return bytes;
}

struct Box {
    std::string kind;
    std::int64_t bytes = 0;
};

/// The box that begins there; absent where none does, or it would reach beyond the file's end.
std::optional<Box> boxAt(const Read& read, std::int64_t offset, std::int64_t end) {
    const std::string head = readAll(read, offset, shortHead);
    if (head.empty()) {
        return std::nullopt;
    }
    std::uint64_t bytes = bigEndian(std::string_view(head).substr(0, 4));
    std::int64_t headBytes = shortHead;
    if (bytes == 0) { // to the end of the file
        bytes = static_cast<std::uint64_t>(end - offset);
    } else if (bytes == 1) { // the length follows in 64 bits
        const std::string length = readAll(read, offset + shortHead, longHead - shortHead);
        if (length.empty()) {
            return std::nullopt;
        }
        bytes = bigEndian(length);
        headBytes = longHead;
    }
    if (bytes < static_cast<std::uint64_t>(headBytes) ||
        bytes > static_cast<std::uint64_t>(end - offset)) {
        return std::nullopt;
    }
    return Box{head.substr(4, 4), static_cast<std::int64_t>(bytes)};
}

} // namespace

bool isMp4(std::int64_t bytes, const Read& read) {
    std::set<std::string> kinds;
    std::int64_t offset = 0;
    for (int count = 0; offset < bytes && count < mostBoxes; ++count) {
        const auto box = boxAt(read, offset, bytes);
        if (!box || (count == 0 && box->kind != "ftyp")) {
            return false;
        }
        kinds.insert(box->kind);
        offset += box->bytes;
    }
    return offset == bytes && kinds.contains("moov") && kinds.contains("mdat");
}

} // namespace KeloService
