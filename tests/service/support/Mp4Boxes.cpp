#include "support/Mp4Boxes.hpp"

#include "service/media/Mp4Box.hpp"

#include <stdexcept>

namespace KeloServiceTest {

std::vector<Mp4Box> readBoxes(std::string_view bytes) {
    std::vector<Mp4Box> boxes;
    while (!bytes.empty()) {
        const std::uint64_t size =
            bytes.size() < 8 ? 0 : KeloService::bigEndian(bytes.substr(0, 4));
        if (size < 8 || size > bytes.size()) {
            return {};
        }
        boxes.push_back({bytes.substr(4, 4), bytes.substr(8, size - 8)});
        bytes.remove_prefix(size);
    }
    return boxes;
}

std::string boxKinds(std::string_view bytes) {
    std::string kinds;
    for (const Mp4Box& box : readBoxes(bytes)) {
        kinds.append(box.kind).append(" ");
    }
    return kinds;
}

std::string_view findBox(std::string_view bytes, std::string_view path) {
    const std::size_t slash = path.find('/');
    for (const Mp4Box& box : readBoxes(bytes)) {
        if (box.kind == path.substr(0, slash)) {
            return slash == std::string_view::npos ? box.content
                                                   : findBox(box.content, path.substr(slash + 1));
        }
    }
    throw std::out_of_range("there is no box " + std::string(path));
}

} // namespace KeloServiceTest
