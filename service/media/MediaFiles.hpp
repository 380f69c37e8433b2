#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace KeloService {

/// A file that is a part of the program.
struct MediaFile {
    std::string_view name;
    std::string_view bytes;
};

/// The files of a folder like "videos/480", in the order of their names. Throws std::out_of_range
/// for a folder that does not exist.
const std::vector<MediaFile>& mediaFiles(const std::string& folder);

} // namespace KeloService
