#pragma once

#include <string>
#include <string_view>

/// The temporary files of downloads, and the ones among them that nobody writes any more: those of
/// processes that were killed. A download holds a lock on its file, which ends with its process and
/// the children that it forked without starting another program.
namespace KeloAPI::AbandonedDownloads {

/// A fresh name of a temporary file; no other process and no other download has it.
std::string temporaryName();

/// True for a name as `temporaryName` gives them.
bool isTemporaryName(std::string_view name);

/// Opens a new temporary file at `path` and locks it. -1 with `errno` when that is not possible.
int create(const std::string& path);

/// Removes the temporary file at `path` if it is abandoned and can be removed. Usable on any
/// thread.
void removeIfAbandoned(const std::string& path);

/// Removes the abandoned files in `directory`. What cannot be removed stays. False when the
/// directory cannot be read. Usable on any thread.
bool clear(const std::string& directory);

/// The same once in the life of the process: further calls do nothing, unless the directory could
/// not be read. Usable on any thread.
void clearOnce(const std::string& directory);

} // namespace KeloAPI::AbandonedDownloads
