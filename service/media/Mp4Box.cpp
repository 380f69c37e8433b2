#include "service/media/Mp4Box.hpp"

#include "service/media/BigEndian.hpp"

namespace KeloService {

std::string box(std::string_view kind, std::initializer_list<std::string_view> contents) {
    std::size_t size = 8;
    for (const std::string_view content : contents) {
        size += content.size();
    }
    std::string text = bigEndian(size, 4);
    text.reserve(size);
    text += kind;
    for (const std::string_view content : contents) {
        text += content;
    }
    return text;
}

std::string fullBox(std::string_view kind, std::uint32_t flags,
                    std::initializer_list<std::string_view> contents) {
    std::string text = bigEndian(flags, 4);
    for (const std::string_view content : contents) {
        text += content;
    }
    return box(kind, {text});
}

} // namespace KeloService
