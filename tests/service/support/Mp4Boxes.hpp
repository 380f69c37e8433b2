#pragma once

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

/// The kinds of the boxes, each with a blank behind it.
std::string boxKinds(std::string_view bytes);

/// The content of the box at a path like "moov/trak/mdia". Throws std::out_of_range when there is
/// none.
std::string_view findBox(std::string_view bytes, std::string_view path);

} // namespace KeloServiceTest
