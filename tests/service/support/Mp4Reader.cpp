#include "support/Mp4Reader.hpp"

#include <stdexcept>

namespace KeloServiceTest {
namespace {

constexpr const char* tablePath = "moov/trak/mdia/minf/stbl/";

std::string_view part(std::string_view text, std::size_t place, std::uint64_t size) {
    if (place > text.size() || size > text.size() - place) {
        throw std::out_of_range("an MP4 file points behind its end");
    }
    return text.substr(place, size);
}

std::string_view table(std::string_view file, const char* kind) {
    return findBox(file, std::string(tablePath) + kind).value();
}

} // namespace

std::vector<Mp4Box> readBoxes(std::string_view bytes) {
    std::vector<Mp4Box> boxes;
    while (!bytes.empty()) {
        const std::uint64_t size = bytes.size() < 8 ? 0 : readNumber(bytes, 0, 4);
        if (size < 8 || size > bytes.size()) {
            return {};
        }
        boxes.push_back({bytes.substr(4, 4), bytes.substr(8, size - 8)});
        bytes.remove_prefix(size);
    }
    return boxes;
}

std::optional<std::string_view> findBox(std::string_view bytes, std::string_view path) {
    const std::size_t slash = path.find('/');
    for (const Mp4Box& box : readBoxes(bytes)) {
        if (box.kind == path.substr(0, slash)) {
            return slash == std::string_view::npos ? box.content
                                                   : findBox(box.content, path.substr(slash + 1));
        }
    }
    return std::nullopt;
}

std::uint64_t readNumber(std::string_view text, std::size_t place, int bytes) {
    std::uint64_t number = 0;
    for (const char byte : part(text, place, static_cast<std::uint64_t>(bytes))) {
        number = number << 8 | static_cast<unsigned char>(byte);
    }
    return number;
}

std::vector<std::string_view> readUnits(std::string_view sample) {
    std::vector<std::string_view> units;
    while (!sample.empty()) {
        const std::uint64_t size = readNumber(sample, 0, 4);
        units.push_back(part(sample, 4, size));
        sample.remove_prefix(4 + size);
    }
    return units;
}

std::vector<std::string_view> readSamples(std::string_view file) {
    const std::string_view sizes = table(file, "stsz");
    const std::string_view chunks = table(file, "stsc");
    const std::string_view offsets = table(file, "stco");
    const std::uint64_t count = readNumber(sizes, 8, 4);
    // Nothing else is expected here than one chunk with all samples.
    if (readNumber(offsets, 4, 4) != 1 || readNumber(chunks, 4, 4) != 1 ||
        readNumber(chunks, 12, 4) != count) {
        throw std::out_of_range("the samples of an MP4 file are in several chunks");
    }
    std::vector<std::string_view> samples;
    std::size_t place = readNumber(offsets, 8, 4);
    for (std::size_t i = 0; i < count; ++i) {
        samples.push_back(part(file, place, readNumber(sizes, 12 + 4 * i, 4)));
        place += samples.back().size();
    }
    return samples;
}

ParameterSets readParameterSets(std::string_view file) {
    const std::string_view descriptions = table(file, "stsd");
    // Behind the full box's version, flags and count, and the fields of a visual sample entry.
    const auto configuration =
        findBox(findBox(descriptions.substr(8), "avc1").value().substr(78), "avcC").value();
    const std::uint64_t first = readNumber(configuration, 6, 2);
    const std::uint64_t second = readNumber(configuration, 8 + first + 1, 2);
    return {configuration, part(configuration, 8, first),
            part(configuration, 8 + first + 3, second)};
}

} // namespace KeloServiceTest
