#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

namespace KeloHost {

/// Writes a file and flushes it to the disk. An existing file is replaced, or stays as it was when
/// that fails. Returns the error's number, 0 for success.
int replaceFile(const std::string& path, std::string_view bytes, mode_t mode);

} // namespace KeloHost
