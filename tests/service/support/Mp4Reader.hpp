#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace KeloServiceTest {

/// A box of an MP4 file. Its texts point into the file.
struct Mp4Box {
    std::string_view kind;
    std::string_view content;
};

/// The boxes one after the other. Empty when the bytes are anything but whole boxes.
std::vector<Mp4Box> readBoxes(std::string_view bytes);

/// The content of the box at a path like "moov/trak/mdia"; absent when there is none.
std::optional<std::string_view> findBox(std::string_view bytes, std::string_view path);

/// The number that lies in `bytes` bytes from `place` on, the highest first. Throws
/// std::out_of_range beyond the text's end.
std::uint64_t readNumber(std::string_view text, std::size_t place, int bytes);

/// The NAL units that stand one after the other, each behind its length of four bytes. Throws
/// std::out_of_range when the last one is cut off.
std::vector<std::string_view> readUnits(std::string_view sample);

/// The samples of a file whose index says where they are. Throws std::out_of_range when the index
/// points outside the file.
std::vector<std::string_view> readSamples(std::string_view file);

/// The sets of sequence and picture parameters of the file's decoder configuration, one of each.
struct ParameterSets {
    std::string_view configuration;
    std::string_view sequence;
    std::string_view picture;
};
ParameterSets readParameterSets(std::string_view file);

} // namespace KeloServiceTest
