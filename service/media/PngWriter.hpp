#pragma once

#include <string>

namespace KeloService {

/// A square image as a PNG file. `pixels` are red, green and blue bytes, row by row.
std::string pngFile(int side, const std::string& pixels);

} // namespace KeloService
