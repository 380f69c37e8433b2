#pragma once

#include <KeloAPI/base/Object.hpp>

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace KeloAPI {

/// One cache directory for downloaded files, in the container that the application shares with its
/// extensions: one flat level of files, whose age is their date of modification. What fails goes to
/// the diagnostics as one line, and the operation does without. The directory may be asked for from
/// any thread, the rest used from one thread at a time, the registry of managers included.
class KELO_API FileManager final : public Object, public std::enable_shared_from_this<FileManager> {
public:
    /// The one manager for `relativePath`, made at the first request. The path is put behind the
    /// container's as it is, so it brings its own "/" on both ends.
    static std::shared_ptr<FileManager> sharedGroupManager(const std::string& relativePath);

    /// Forgets the manager that is registered under this one's relative path, whichever it is.
    /// Holders keep what they have; the next request makes a fresh one.
    void kill();

    /// As given; the manager's name in the registry.
    const std::string& relativePath() const { return _relativePath; }

    /// The directory's path, found and created at the first call; absent when the application has
    /// no group container, and then for good. An enterprise build of the application (its bundle
    /// identifier says so) has a container of its own.
    std::optional<std::string> documentsDirectory();
    /// Replaces the directory; nothing is looked for or created any more. A relative path is one
    /// below the working directory, wherever that is when the directory is used.
    void setDocumentsDirectory(std::optional<std::string> path);

    /// Deletes the oldest files and keeps the newest `maxCount` and one more; a negative number
    /// keeps none. A directory in the directory counts as a file and goes with all that is in it.
    /// One entry that cannot be examined, and nothing is deleted. An entry that no file endpoint
    /// leads to stays: one with a "?" in its name, or each where the path has no "/" at its end.
    /// Files that are being downloaded do not count; what killed processes left of them is removed.
    void cleanDirectory(std::int64_t maxCount);

private:
    explicit FileManager(std::string relativePath);
    std::optional<std::string> computedDirectory() const;
    std::vector<std::string> allFilesDesc();
    void deleteEntry(const std::string& directory, const std::string& name);

    const std::string _relativePath;
    // Queues ask for the directory on threads of their own.
    std::mutex _mutex;
    bool _computed = false;
    std::optional<std::string> _documentsDirectory;
};

} // namespace KeloAPI
