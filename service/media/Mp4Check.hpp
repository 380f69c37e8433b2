#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace KeloService {

/// Whether a file of this length is an MP4 by its outermost boxes: "ftyp" comes first, "moov" and
/// "mdat" are there, and the boxes fill the file exactly. `read` gives up to so many bytes from
/// there on.
bool isMp4(std::int64_t bytes,
           const std::function<std::string(std::int64_t offset, std::size_t count)>& read);

} // namespace KeloService
