#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

namespace KeloHost {

/// Writes the bytes to a file, down to the disk, in the place of one that is there. When that
/// cannot be done, a file that was there is as it was. Returns the error's number, 0 for success.
int replaceFile(const std::string& path, std::string_view bytes, mode_t mode);

} // namespace KeloHost
